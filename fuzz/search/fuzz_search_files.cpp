// The user's search files come from disk, from other machines and from hand editing. Any bytes must
// parse without fault, and what is kept must survive being written and read again unchanged.
#include "host/effect_data.h"
#include "nimbit/utils/assert.h"
#include "popup/catalogue_index.h"
#include "popup/effect_alias.h"
#include "popup/search_data_files.h"

#include <cstdlib>
#include <string_view>
#include <vector>

namespace {

std::vector<EffectData> MakeCatalogue() {
    std::vector<EffectData> catalogue;
    int id = 1;
    for (const char* name : {"Gaussian Blur", "Fast Box Blur", "Glow", "Levels", "Tint",
                             "CC Radial Fast Blur", "Echo", "A", "Fill", "Bulge"})
        catalogue.push_back({id++, name, "", "Stylize", false});
    for (const char* name : {"Blur In", "Fade Up Characters", "\xC3\x89toile"})
        catalogue.push_back({-id++, name, "", "Animation Preset", true});
    for (EffectData& entry : catalogue)
        for (char c : entry.name)
            entry.search_name += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    return catalogue;
}

bool SameEntries(const std::vector<EffectAlias>& a, const std::vector<EffectAlias>& b,
                 bool compareOverrides) {
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (a[i].alias != b[i].alias || a[i].effect != b[i].effect ||
            (compareOverrides && a[i].override != b[i].override))
            return false;
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<EffectData> catalogue = MakeCatalogue();
    static const CatalogueIndex index(catalogue);
    const std::string_view text(reinterpret_cast<const char*>(data), size);

    std::vector<EffectAlias> blacklist, aliases;
    ParseSearchData(text, index, blacklist, aliases);
    for (const EffectAlias& entry : blacklist)
        NIMBIT_ASSERT(entry.effect != nullptr);
    std::vector<EffectAlias> blacklist2, aliases2;
    ParseSearchData(FormatSearchData(blacklist, aliases), index, blacklist2, aliases2);
    // A blacklist line has no place for an override, so only the aliases keep theirs.
    NIMBIT_ASSERT(SameEntries(blacklist, blacklist2, false));
    NIMBIT_ASSERT(SameEntries(aliases, aliases2, true));

    std::vector<EffectAlias> slots, slots2;
    ParseShortcutsData(text, index, slots);
    NIMBIT_ASSERT(slots.size() == 9);
    ParseShortcutsData(FormatShortcutsData(slots), index, slots2);
    // Empty slots close up on the way, so compare the occupied ones in order.
    std::vector<EffectAlias> occupied;
    for (const EffectAlias& slot : slots)
        if (slot.effect != nullptr)
            occupied.push_back(slot);
    slots2.resize(occupied.size());
    NIMBIT_ASSERT(SameEntries(occupied, slots2, true));
    return 0;
}
