#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct EffectData;
struct EffectAlias;

// One result of a search: the entry to offer and whether it came from the user's aliases or
// favorites (such rows do not offer "Add to Favorites").
struct SearchEntry {
    const EffectData* effect = nullptr;
    bool user_entry = false;
};

enum class SearchRowKind : uint8_t { EffectsHeader, PresetsHeader, NoMatchesHeader, Entry };

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

    bool HasEffectsHeader() const { return !entries.empty(); }
    bool HasPresetsHeader() const { return effect_count < entries.size(); }
    // Index into entries of the first preset, or entries.size() when there is none.
    size_t FirstPreset() const { return effect_count; }
    // Headers and results in list order: "Effects" before the first result whatever it is (a list of
    // presets alone still opens with it), "Presets" before the first preset, and "No Matches" alone
    // when nothing was found for a non-empty text. The first entry row is the one to select.
    std::vector<SearchRow> Rows() const;
};

// The search run on every keystroke of the popup, kept apart from the widgets. The text is matched,
// lower-cased but otherwise as typed (blanks included), in four passes: aliases whose text begins
// with it, aliases containing it, catalogue names beginning with it, catalogue names containing it.
// An entry is taken once, at its first hit, and never when the blacklist names it.
//
// The object keeps its scratch space between runs, so a keystroke does not rebuild it from nothing.
// Its cost is linear in the catalogue and the lists: found and blacklisted entries are marked per
// catalogue position rather than looked up in the result lists.
class EffectSearch {
public:
    void Run(std::string_view text, const std::vector<EffectData>& catalogue,
             const std::vector<EffectAlias>& blacklist, const std::vector<EffectAlias>& aliases,
             SearchResults& results);

private:
    enum Mark : uint8_t { Free = 0, Blacklisted = 1, Found = 2 };

    Mark& MarkOf(const EffectData* effect);
    void Consider(const EffectData* effect);

    const EffectData* base = nullptr; // the catalogue of the current run
    std::vector<Mark> marks;          // one per catalogue entry
    // Marks of entries that lie outside the catalogue, such as a caller's own records.
    std::vector<std::pair<const EffectData*, Mark>> strays;
    std::vector<const EffectData*> effects, presets, deferred;
    std::string lowered;
};
