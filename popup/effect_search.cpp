#include "popup/effect_search.h"

#include "host/effect_data.h"
#include "nimbit/utils/string_utils.h"
#include "nimbit/utils/utf8_case.h"
#include "popup/effect_alias.h"

#include <algorithm>
#include <array>
#include <functional>
#include <tuple>

namespace {

bool IsUpper(char c) {
    return c >= 'A' && c <= 'Z';
}
bool IsLower(char c) {
    return c >= 'a' && c <= 'z';
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
// Letters, digits and any non-ASCII byte make up words; everything else separates them.
bool IsWordByte(char c) {
    return IsUpper(c) || IsLower(c) || IsDigit(c) || static_cast<unsigned char>(c) >= 0x80;
}

// The typo-tolerant pass compares at most this many bytes of the text, one bit each.
constexpr size_t MaxPattern = 64;

// Smallest edit distance, with adjacent transpositions counting one, between the pattern and any
// stretch of text (bit-parallel, one step per byte of text). peq holds, per byte value, the bits of
// the pattern positions that hold it.
size_t Distance(const std::array<uint64_t, 256>& peq, size_t m, std::string_view text) {
    const uint64_t top = uint64_t{1} << (m - 1);
    uint64_t vp = ~uint64_t{0}, vn = 0, d0 = 0, previous = 0;
    size_t distance = m, best = m;
    for (const char c : text) {
        const uint64_t pm = peq[static_cast<unsigned char>(c)];
        const uint64_t transposed = ((~d0 & pm) << 1) & previous;
        d0 = (((pm & vp) + vp) ^ vp) | pm | vn | transposed;
        uint64_t hp = vn | ~(d0 | vp);
        const uint64_t hn = d0 & vp;
        distance += (hp & top) ? 1 : 0;
        distance -= (hn & top) ? 1 : 0;
        hp <<= 1; // the stretch may start anywhere: row zero stays zero
        vp = (hn << 1) | ~(d0 | hp);
        vn = hp & d0;
        previous = pm;
        best = std::min(best, distance);
    }
    return best;
}

// The stretch of text closest to the pattern, as Distance measures it; plain dynamic programming,
// run only for the few rows shown.
ByteRange ClosestStretch(std::string_view pattern, std::string_view text) {
    const size_t m = pattern.size(), n = text.size(), w = n + 1;
    std::vector<uint32_t> cost((m + 1) * w), start((m + 1) * w);
    for (size_t j = 0; j <= n; ++j)
        start[j] = static_cast<uint32_t>(j);
    for (size_t i = 1; i <= m; ++i) {
        cost[i * w] = static_cast<uint32_t>(i);
        for (size_t j = 1; j <= n; ++j) {
            size_t from = (i - 1) * w + j - 1;
            uint32_t best = cost[from] + (pattern[i - 1] != text[j - 1]);
            auto consider = [&](size_t cell, uint32_t c) {
                if (c < best)
                    best = c, from = cell;
            };
            consider((i - 1) * w + j, cost[(i - 1) * w + j] + 1);
            consider(i * w + j - 1, cost[i * w + j - 1] + 1);
            if (i > 1 && j > 1 && pattern[i - 1] == text[j - 2] && pattern[i - 2] == text[j - 1])
                consider((i - 2) * w + j - 2, cost[(i - 2) * w + j - 2] + 1);
            cost[i * w + j] = best;
            start[i * w + j] = start[from];
        }
    }
    size_t end = 0;
    for (size_t j = 1; j <= n; ++j)
        if (cost[m * w + j] < cost[m * w + end])
            end = j;
    return {start[m * w + end], static_cast<uint32_t>(end)};
}

// The pattern's letters (blanks skipped) in order in text, the first at a word start, leftmost
// choice; the positions found go to at. False when they are not all there.
bool WordStartSubsequence(std::string_view pattern, std::string_view text, std::vector<uint32_t>* at) {
    size_t j = 0;
    bool first = true;
    for (const char c : pattern) {
        if (c == ' ')
            continue;
        while (j < text.size() && (text[j] != c || (first && j > 0 && IsWordByte(text[j - 1]))))
            ++j;
        if (j == text.size())
            return false;
        if (at != nullptr)
            at->push_back(static_cast<uint32_t>(j));
        first = false;
        ++j;
    }
    return !first;
}

} // namespace

std::string MatchWords(std::string_view matchName) {
    std::vector<std::string_view> tokens;
    for (size_t i = 0; i < matchName.size();) {
        size_t end = i;
        while (end < matchName.size() && IsWordByte(matchName[end]))
            ++end;
        if (end > i)
            tokens.push_back(matchName.substr(i, end - i));
        i = std::max(end, i + 1);
    }
    // A vendor prefix such as "ADBE" or "CC" says nothing an artist would type.
    if (tokens.size() > 1 && tokens[0].size() > 1 &&
        std::none_of(tokens[0].begin(), tokens[0].end(), IsLower) &&
        std::any_of(tokens[0].begin(), tokens[0].end(), IsUpper))
        tokens.erase(tokens.begin());
    // Versions: trailing number tokens ("Blur 2", "Burst 2.5"), then digits ending the last word.
    while (tokens.size() > 1 && std::all_of(tokens.back().begin(), tokens.back().end(), IsDigit))
        tokens.pop_back();
    if (!tokens.empty()) {
        std::string_view& last = tokens.back();
        size_t keep = last.size();
        while (keep > 0 && IsDigit(last[keep - 1]))
            --keep;
        if (keep > 0)
            last = last.substr(0, keep);
    }
    std::string words;
    for (const std::string_view token : tokens) {
        for (size_t i = 0; i < token.size(); ++i) {
            // CamelCase: a capital after a small letter, or the last capital of a run that a small
            // letter follows ("HDRCompander" -> "hdr compander").
            const bool split =
                i > 0 && IsUpper(token[i]) &&
                (IsLower(token[i - 1]) || (i + 1 < token.size() && IsLower(token[i + 1]) && i > 1 &&
                                           IsUpper(token[i - 1]) && IsUpper(token[i - 2])));
            if (!words.empty() && (i == 0 || split))
                words += ' ';
            words += IsUpper(token[i]) ? static_cast<char>(token[i] - 'A' + 'a') : token[i];
        }
    }
    return words;
}

void PrepareSearchNames(EffectData& entry) {
    entry.match_words = MatchWords(entry.match_name);
    entry.folded_name = nimbit::utf8_fold(entry.name);
    entry.plain_name = nimbit::utf8_fold(entry.name, true);
}

std::vector<SearchRow> SearchResults::Rows() const {
    std::vector<SearchRow> rows;
    if (entries.empty()) {
        if (no_matches)
            rows.push_back({SearchRowKind::NoMatchesHeader, 0});
        return rows;
    }
    rows.reserve(entries.size() + 2);
    for (size_t i = 0; i < entries.size(); ++i) {
        if (i == 0)
            rows.push_back(
                {did_you_mean ? SearchRowKind::DidYouMeanHeader : SearchRowKind::EffectsHeader, 0});
        if (i == effect_count)
            rows.push_back({SearchRowKind::PresetsHeader, 0});
        rows.push_back({SearchRowKind::Entry, i});
    }
    return rows;
}

EffectSearch::Mark& EffectSearch::MarkOf(const EffectData* effect) {
    // std::less gives a total order even for pointers into different arrays.
    std::less<const EffectData*> before;
    if (!before(effect, base) && before(effect, base + marks.size()))
        return marks[static_cast<size_t>(effect - base)];
    for (auto& [stray, mark] : strays)
        if (stray == effect)
            return mark;
    strays.emplace_back(effect, Free);
    return strays.back().second;
}

EffectSearch::Hit* EffectSearch::Take(const EffectData* effect) {
    if (effect == nullptr)
        return nullptr;
    Mark& mark = MarkOf(effect);
    if (mark != Free)
        return nullptr;
    mark = Found;
    std::vector<Hit>& list = effect->is_preset ? presets : effects;
    list.push_back({effect, static_cast<uint32_t>(out->highlights.size()), 0});
    return &list.back();
}

void EffectSearch::AddRange(Hit& hit, size_t begin, size_t end) {
    out->highlights.push_back({static_cast<uint32_t>(begin), static_cast<uint32_t>(end)});
    ++hit.count;
}

const std::string& EffectSearch::Folded(const EffectData& entry) const {
    return options.ignore_accents ? entry.plain_name : entry.folded_name;
}

void EffectSearch::AddFoldedRange(Hit& hit, size_t begin, size_t end) {
    // Refolded for the hit alone, to learn which bytes of the name each folded byte came from.
    nimbit::utf8_fold(hit.effect->name, options.ignore_accents, &origins);
    if (begin >= end || end >= origins.size())
        return; // the entry's folded name was not made from its name
    // The end is extended over the whole character its last byte came from ("ss" from "ß").
    size_t next = end;
    while (next + 1 < origins.size() && origins[next] == origins[end - 1])
        ++next;
    const uint32_t from = origins[begin], to = origins[next];
    // Ranges of one hit arrive in any order and may overlap: keep them sorted and merged.
    const auto first = out->highlights.begin() + hit.first, last = first + hit.count;
    for (auto range = first; range != last; ++range) {
        if (to >= range->begin && from <= range->end) {
            range->begin = std::min(range->begin, from);
            range->end = std::max(range->end, to);
            return;
        }
    }
    AddRange(hit, from, to);
    std::sort(out->highlights.begin() + hit.first, out->highlights.end(),
              [](const ByteRange& a, const ByteRange& b) { return a.begin < b.begin; });
}

void EffectSearch::Run(std::string_view text, const std::vector<EffectData>& catalogue,
                       const std::vector<EffectAlias>& blacklist, const std::vector<EffectAlias>& aliases,
                       SearchResults& results) {
    results.entries.clear();
    results.entries.reserve(catalogue.size());
    results.highlights.clear();
    results.effect_count = 0;
    results.no_matches = false;
    results.did_you_mean = false;
    if (text.empty())
        return;

    out = &results;
    lowered = nimbit::string_lower(text);
    const std::string_view needle = lowered;
    base = catalogue.data();
    marks.assign(catalogue.size(), Free);
    strays.clear();
    effects.clear();
    presets.clear();
    for (const EffectAlias& entry : blacklist)
        if (entry.effect != nullptr)
            MarkOf(entry.effect) = Blacklisted;

    // An alias hit shows where the text also stands in the name, if it does.
    auto takeAlias = [&](const EffectData* effect) {
        if (Hit* hit = Take(effect))
            if (const size_t at = effect->search_name.find(needle); at != std::string::npos)
                AddRange(*hit, at, at + needle.size());
    };
    // Each pair of passes (prefix, then anywhere) is one scan: a prefix hit is taken at once, any
    // other hit waits in deferred. Taking the deferred hits afterwards, in list order, gives what a
    // second scan would, since everything the first pass took is already marked as found.
    deferred.clear();
    for (const EffectAlias& entry : aliases) {
        const size_t at = std::string_view(entry.alias).find(needle);
        if (at == 0)
            takeAlias(entry.effect);
        else if (at != std::string_view::npos)
            deferred.push_back({entry.effect, at});
    }
    for (const Pending& pending : deferred)
        takeAlias(pending.effect);
    const size_t userEffects = effects.size();
    const size_t userPresets = presets.size();

    deferred.clear();
    auto takeName = [&](const EffectData* effect, size_t at) {
        if (Hit* hit = Take(effect))
            AddRange(*hit, at, at + needle.size());
    };
    for (const EffectData& entry : catalogue) {
        const size_t at = std::string_view(entry.search_name).find(needle);
        if (at == 0)
            takeName(&entry, 0);
        else if (at != std::string_view::npos)
            deferred.push_back({&entry, at});
    }
    for (const Pending& pending : deferred)
        takeName(pending.effect, pending.at);

    if (options.beyond_substrings) {
        FindBeyondSubstrings(catalogue);
        if (effects.empty() && presets.empty())
            Suggest(catalogue);
    }

    if (usage.size() == catalogue.size() && !results.did_you_mean) {
        RankByUsage(effects, userEffects);
        RankByUsage(presets, userPresets);
    }
    for (const std::vector<Hit>* list : {&effects, &presets}) {
        const size_t user = list == &effects ? userEffects : userPresets;
        for (size_t i = 0; i < list->size(); ++i) {
            const Hit& hit = (*list)[i];
            results.entries.push_back({hit.effect, i < user, hit.first, hit.count});
        }
    }
    results.effect_count = effects.size();
    results.no_matches = results.entries.empty();
    out = nullptr;
}

void EffectSearch::RankByUsage(std::vector<Hit>& list, size_t from) {
    const std::less<const EffectData*> before;
    auto score = [&](const Hit& hit) { // entries outside the catalogue were never ranked
        return before(hit.effect, base) || !before(hit.effect, base + usage.size())
                   ? 0.0f
                   : usage[hit.effect - base];
    };
    // Only the few entries ever used move: they are taken out, sorted, and put in front of the rest.
    used.clear();
    size_t kept = from;
    for (size_t i = from; i < list.size(); ++i) {
        if (score(list[i]) > 0)
            used.push_back(list[i]);
        else
            list[kept++] = list[i];
    }
    if (used.empty())
        return;
    std::move_backward(list.begin() + static_cast<ptrdiff_t>(from),
                       list.begin() + static_cast<ptrdiff_t>(kept), list.end());
    std::stable_sort(used.begin(), used.end(),
                     [&](const Hit& a, const Hit& b) { return score(a) > score(b); });
    std::copy(used.begin(), used.end(), list.begin() + static_cast<ptrdiff_t>(from));
}

void EffectSearch::FindBeyondSubstrings(const std::vector<EffectData>& catalogue) {
    folded = nimbit::utf8_fold(lowered, options.ignore_accents);
    if (folded.empty())
        return;
    // Entries taken or blacklisted are skipped before anything is compared, so a text the four
    // passes answered for most of the catalogue costs little here.
    auto scan = [&](auto&& where, bool highlight) {
        deferred.clear();
        auto take = [&](const EffectData* entry, size_t at) {
            if (Hit* hit = Take(entry); hit != nullptr && highlight)
                AddFoldedRange(*hit, at, at + folded.size());
        };
        for (size_t i = 0; i < catalogue.size(); ++i) {
            if (marks[i] != Free)
                continue;
            const size_t at = std::string_view(where(catalogue[i])).find(folded);
            if (at == 0)
                take(&catalogue[i], 0);
            else if (at != std::string_view::npos)
                deferred.push_back({&catalogue[i], at});
        }
        for (const Pending& pending : deferred)
            take(pending.effect, pending.at);
    };
    scan([&](const EffectData& e) -> const std::string& { return Folded(e); }, true);
    scan([](const EffectData& e) -> const std::string& { return e.match_words; }, false);

    std::vector<std::string_view> words;
    for (size_t i = 0; i < folded.size();) {
        const size_t end = std::min(folded.find(' ', i), folded.size());
        if (end > i)
            words.push_back(std::string_view(folded).substr(i, end - i));
        i = end + 1;
    }
    if (words.size() < 2)
        return;
    auto holdsAll = [&](std::string_view name) {
        return std::all_of(words.begin(), words.end(),
                           [&](std::string_view word) { return name.find(word) != std::string_view::npos; });
    };
    for (size_t i = 0; i < catalogue.size(); ++i) {
        const EffectData& entry = catalogue[i];
        if (marks[i] != Free)
            continue;
        if (holdsAll(Folded(entry))) {
            Hit* hit = Take(&entry);
            for (const std::string_view word : words) {
                const size_t at = Folded(entry).find(word);
                AddFoldedRange(*hit, at, at + word.size());
            }
        } else if (holdsAll(entry.match_words)) {
            Take(&entry);
        }
    }
}

void EffectSearch::Suggest(const std::vector<EffectData>& catalogue) {
    const std::string_view pattern = std::string_view(folded).substr(0, MaxPattern);
    const size_t m = pattern.size();
    if (m < 2)
        return;
    std::array<uint64_t, 256> peq{};
    for (size_t i = 0; i < m; ++i)
        peq[static_cast<unsigned char>(pattern[i])] |= uint64_t{1} << i;
    // Longer texts may hold more typos.
    const size_t allowed = m < 3 ? 0 : m < 5 ? 1 : m < 9 ? 2 : 3;

    // Ranked by distance (letters in order alone count as one more than allowed); at equal distance
    // letters in order from a word start first, then a displayed name before a match name, then the
    // shorter name, less of it left unmatched, then catalogue order: never anything that varies.
    struct Candidate {
        size_t distance;
        bool outOfOrder, byMatchName;
        size_t length, index;
        bool operator<(const Candidate& o) const {
            return std::tie(distance, outOfOrder, byMatchName, length, index) <
                   std::tie(o.distance, o.outOfOrder, o.byMatchName, o.length, o.index);
        }
    };
    std::vector<Candidate> best;
    for (size_t i = 0; i < catalogue.size(); ++i) {
        if (marks[i] != Free)
            continue;
        const EffectData& entry = catalogue[i];
        const size_t byName = Distance(peq, m, Folded(entry));
        const size_t distance =
            entry.match_words.empty() ? byName : std::min(byName, Distance(peq, m, entry.match_words));
        const bool inOrder = WordStartSubsequence(pattern, Folded(entry), nullptr) ||
                             WordStartSubsequence(pattern, entry.match_words, nullptr);
        if (distance > allowed && !inOrder)
            continue;
        const Candidate candidate{std::min(distance, allowed + 1), !inOrder, byName > distance,
                                  Folded(entry).size(), i};
        if (best.size() == options.max_suggestions && (best.empty() || !(candidate < best.back())))
            continue;
        best.insert(std::upper_bound(best.begin(), best.end(), candidate), candidate);
        if (best.size() > options.max_suggestions)
            best.pop_back();
    }

    std::vector<uint32_t> at;
    for (const Candidate& candidate : best) {
        const EffectData& entry = catalogue[candidate.index];
        Hit* hit = Take(&entry);
        const std::string& name = Folded(entry);
        at.clear();
        if (Distance(peq, m, name) <= allowed) {
            const ByteRange stretch = ClosestStretch(pattern, name);
            AddFoldedRange(*hit, stretch.begin, stretch.end);
        } else if (WordStartSubsequence(pattern, name, &at)) {
            for (const uint32_t position : at)
                AddFoldedRange(*hit, position, position + 1);
        }
    }
    out->did_you_mean = !best.empty();
}
