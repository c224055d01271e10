#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct EffectData;
struct EffectAlias;

// Byte offsets [begin, end) into a displayed name.
struct ByteRange {
    uint32_t begin = 0, end = 0;

    friend bool operator==(const ByteRange&, const ByteRange&) = default;
};

// One result of a search: the entry to offer and whether it came from the user's aliases or
// favorites (such rows do not offer "Add to Favorites"). The parts of the displayed name that
// matched are SearchResults::highlights[first_highlight, first_highlight + highlight_count).
struct SearchEntry {
    const EffectData* effect = nullptr;
    bool user_entry = false;
    uint32_t first_highlight = 0, highlight_count = 0;
};

enum class SearchRowKind : uint8_t { EffectsHeader, PresetsHeader, NoMatchesHeader, Entry, DidYouMeanHeader };

// One row of the list as shown: a header, or the result at index entry of SearchResults::entries.
struct SearchRow {
    SearchRowKind kind = SearchRowKind::Entry;
    size_t entry = 0;

    friend bool operator==(const SearchRow&, const SearchRow&) = default;
};

// What one search found. Effects come first, then presets, each in the order found.
struct SearchResults {
    std::vector<SearchEntry> entries;
    size_t effect_count = 0; // entries[0, effect_count) are effects, the rest presets
    bool no_matches = false; // the text was not empty and nothing was found
    // Nothing matched as typed: the entries are near misses, best first within effects and presets.
    bool did_you_mean = false;
    std::vector<ByteRange> highlights; // see SearchEntry

    std::span<const ByteRange> Highlights(const SearchEntry& entry) const {
        return std::span(highlights).subspan(entry.first_highlight, entry.highlight_count);
    }

    bool HasEffectsHeader() const { return !entries.empty(); }
    bool HasPresetsHeader() const { return effect_count < entries.size(); }
    // Index into entries of the first preset, or entries.size() when there is none.
    size_t FirstPreset() const { return effect_count; }
    // Headers and results in list order: "Effects" before the first result whatever it is (a list of
    // presets alone still opens with it), "Presets" before the first preset, and "No Matches" alone
    // when nothing was found for a non-empty text. Near misses open with "Did you mean" instead of
    // "Effects". The first entry row is the one to select.
    std::vector<SearchRow> Rows() const;
};

struct SearchOptions {
    // Off: only the four passes on ASCII-lowered names, as the search always answered.
    bool beyond_substrings = true;
    bool ignore_accents = false; // "uber" finds "Überlagern", "cafe" finds "Café"
    size_t max_suggestions = 12; // rows of the typo-tolerant pass
};

// The search run on every keystroke of the popup, kept apart from the widgets. The text is matched,
// lower-cased (ASCII only) but otherwise as typed (blanks included), in four passes: aliases whose
// text begins with it, aliases containing it, catalogue names beginning with it, catalogue names
// containing it. An entry is taken once, at its first hit, and never when the blacklist names it.
//
// Then, so that nothing found by those passes moves, with the text lower-cased in every script:
// catalogue names beginning with it and containing it; match names beginning with it and containing
// it; entries whose name or match name holds every word of the text in any order. Only when all of
// these find nothing, the closest names by edit distance (transpositions count one) or by letters in
// order from a word start ("gblur"), at most max_suggestions of them, nearest first, equal ranks in
// catalogue order so the rows never depend on anything but the text.
//
// The object keeps its scratch space between runs, so a keystroke does not rebuild it from nothing.
// Its cost is linear in the catalogue and the lists: found and blacklisted entries are marked per
// catalogue position rather than looked up in the result lists.
class EffectSearch {
public:
    SearchOptions options;
    // When set (one score per catalogue position), entries with a higher score come first within the
    // effects and within the presets found, behind the user's aliases and favorites; equal scores
    // keep the order found. Near misses are never reordered.
    std::vector<float> usage;

    void Run(std::string_view text, const std::vector<EffectData>& catalogue,
             const std::vector<EffectAlias>& blacklist, const std::vector<EffectAlias>& aliases,
             SearchResults& results);

private:
    enum Mark : uint8_t { Free = 0, Blacklisted = 1, Found = 2 };
    struct Hit {
        const EffectData* effect;
        uint32_t first, count; // its ranges in the results' highlights
    };
    struct Pending {
        const EffectData* effect;
        size_t at; // where the text was found in the name compared
    };

    Mark& MarkOf(const EffectData* effect);
    Hit* Take(const EffectData* effect);
    void AddRange(Hit& hit, size_t begin, size_t end);
    // Highlights the folded name's bytes [begin, end) in the displayed name.
    void AddFoldedRange(Hit& hit, size_t begin, size_t end);
    void FindBeyondSubstrings(const std::vector<EffectData>& catalogue);
    void Suggest(const std::vector<EffectData>& catalogue);
    void RankByUsage(std::vector<Hit>& list, size_t from);
    const std::string& Folded(const EffectData& entry) const;

    const EffectData* base = nullptr; // the catalogue of the current run
    std::vector<Mark> marks;          // one per catalogue entry
    // Marks of entries that lie outside the catalogue, such as a caller's own records.
    std::vector<std::pair<const EffectData*, Mark>> strays;
    std::vector<Hit> effects, presets, used;
    std::vector<Pending> deferred;
    std::string lowered, folded;
    std::vector<uint32_t> origins;
    SearchResults* out = nullptr;
};

// The readable, lower-case words of a host match name: a leading all-capitals vendor token and
// trailing version digits dropped, CamelCase and punctuation split ("ADBE Box Blur2" -> "box blur").
std::string MatchWords(std::string_view matchName);
// Fills an entry's match_words, folded_name and plain_name from its name and match_name.
void PrepareSearchNames(EffectData& entry);
