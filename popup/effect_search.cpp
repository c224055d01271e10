#include "popup/effect_search.h"

#include "host/effect_data.h"
#include "nimbit/utils/string_utils.h"
#include "popup/effect_alias.h"

#include <functional>

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
            rows.push_back({SearchRowKind::EffectsHeader, 0});
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

void EffectSearch::Consider(const EffectData* effect) {
    if (effect == nullptr)
        return;
    Mark& mark = MarkOf(effect);
    if (mark != Free)
        return;
    mark = Found;
    (effect->is_preset ? presets : effects).push_back(effect);
}

void EffectSearch::Run(std::string_view text, const std::vector<EffectData>& catalogue,
                       const std::vector<EffectAlias>& blacklist, const std::vector<EffectAlias>& aliases,
                       SearchResults& results) {
    results.entries.clear();
    results.entries.reserve(catalogue.size());
    results.effect_count = 0;
    results.no_matches = false;
    if (text.empty())
        return;

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

    // Each pair of passes (prefix, then anywhere) is one scan: a prefix hit is taken at once, any
    // other hit waits in deferred. Taking the deferred hits afterwards, in list order, gives what a
    // second scan would, since everything the first pass took is already marked as found.
    deferred.clear();
    for (const EffectAlias& entry : aliases) {
        const size_t at = std::string_view(entry.alias).find(needle);
        if (at == 0)
            Consider(entry.effect);
        else if (at != std::string_view::npos)
            deferred.push_back(entry.effect);
    }
    for (const EffectData* effect : deferred)
        Consider(effect);
    const size_t userEffects = effects.size();
    const size_t userPresets = presets.size();

    deferred.clear();
    for (const EffectData& entry : catalogue) {
        const size_t at = std::string_view(entry.search_name).find(needle);
        if (at == 0)
            Consider(&entry);
        else if (at != std::string_view::npos)
            deferred.push_back(&entry);
    }
    for (const EffectData* effect : deferred)
        Consider(effect);

    for (size_t i = 0; i < effects.size(); ++i)
        results.entries.push_back({effects[i], i < userEffects});
    for (size_t i = 0; i < presets.size(); ++i)
        results.entries.push_back({presets[i], i < userPresets});
    results.effect_count = effects.size();
    results.no_matches = results.entries.empty();
}
