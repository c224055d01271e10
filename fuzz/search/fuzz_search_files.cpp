// The user's search files come from disk, from other machines and from hand editing. Any bytes must
// parse without fault, and what is kept must survive being written and read again unchanged.
#include "fuzz/fuzz_support.h"
#include "host/effect_data.h"
#include "nimbit/utils/string_utils.h"
#include "popup/catalogue_index.h"
#include "popup/effect_alias.h"
#include "popup/search_data_files.h"

#include <algorithm>
#include <vector>

namespace {

std::vector<EffectData> MakeCatalogue() {
    std::vector<EffectData> catalogue;
    int id = 1;
    for (const char* name : {"Gaussian Blur", "Fast Box Blur", "Glow", "Levels", "Tint",
                             "CC Radial Fast Blur", "Echo", "A", "Fill", "Bulge"})
        catalogue.push_back({id++, name, nimbit::string_lower(name), "Stylize", false});
    for (const char* name : {"Blur In", "Fade Up Characters", "\xC3\x89toile"})
        catalogue.push_back({-id++, name, nimbit::string_lower(name), "Animation Preset", true});
    return catalogue;
}

// A blacklist line has no place for an override, so only the aliases keep theirs.
bool SameEntries(const std::vector<EffectAlias>& a, const std::vector<EffectAlias>& b, bool overrides) {
    return std::equal(
        a.begin(), a.end(), b.begin(), b.end(), [&](const EffectAlias& x, const EffectAlias& y) {
            return x.alias == y.alias && x.effect == y.effect && (!overrides || x.override == y.override);
        });
}

} // namespace

FUZZ_TARGET() {
    static const std::vector<EffectData> catalogue = MakeCatalogue();
    static const CatalogueIndex index(catalogue);
    const std::string_view text = in.text();

    std::vector<EffectAlias> blacklist, aliases, blacklist2, aliases2;
    ParseSearchData(text, index, blacklist, aliases);
    for (const EffectAlias& entry : blacklist)
        check(entry.effect != nullptr);
    ParseSearchData(FormatSearchData(blacklist, aliases), index, blacklist2, aliases2);
    check(SameEntries(blacklist, blacklist2, false) && SameEntries(aliases, aliases2, true));

    std::vector<EffectAlias> slots, slots2, occupied;
    ParseShortcutsData(text, index, slots);
    check(slots.size() == 9);
    ParseShortcutsData(FormatShortcutsData(slots), index, slots2);
    // Empty slots close up on the way, so compare the occupied ones in order.
    for (const EffectAlias& slot : slots)
        if (slot.effect != nullptr)
            occupied.push_back(slot);
    slots2.resize(occupied.size());
    check(SameEntries(occupied, slots2, true));
}
