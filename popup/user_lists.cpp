#include "popup/user_lists.h"

#include "host/effect_data.h"
#include "popup/effect_alias.h"

#include <algorithm>

namespace {

// Only the first nine entries are slots, whatever the vector's size.
unsigned long SlotCount(const std::vector<EffectAlias>& shortcuts) {
    return std::min<unsigned long>(shortcuts.size(), ShortcutSlotCount);
}

} // namespace

void AddToList(std::vector<EffectAlias>& blacklist, std::vector<EffectAlias>& aliases,
               const EffectData* effect, bool toBlacklist) {
    if (effect == nullptr)
        return;
    (toBlacklist ? blacklist : aliases).push_back(EffectAlias{effect->search_name, effect, nullptr});
}

std::string MakeShortcutLabel(std::string_view displayName) {
    std::string label(displayName.substr(0, 3));
    // Only ASCII letters change case: a locale-dependent toupper could rewrite a byte of a UTF-8 sequence.
    if (!label.empty() && label[0] >= 'a' && label[0] <= 'z')
        label[0] = static_cast<char>(label[0] - 'a' + 'A');
    return label;
}

bool AddToShortcuts(std::vector<EffectAlias>& shortcuts, const EffectData* effect) {
    if (effect == nullptr)
        return false;
    for (unsigned long i = 0; i < SlotCount(shortcuts); ++i) {
        if (shortcuts[i].effect == nullptr) {
            shortcuts[i] = EffectAlias{MakeShortcutLabel(effect->name), effect, nullptr};
            return true;
        }
    }
    return false;
}

bool ReplaceToShortcuts(std::vector<EffectAlias>& shortcuts, const EffectData* effect, unsigned long index) {
    if (effect == nullptr || index >= SlotCount(shortcuts) || shortcuts[index].effect == nullptr)
        return false;
    shortcuts[index].effect = effect;
    shortcuts[index].alias = MakeShortcutLabel(effect->name);
    return true;
}

unsigned long CountShortcuts(const std::vector<EffectAlias>& shortcuts) {
    unsigned long count = 0;
    for (unsigned long i = 0; i < SlotCount(shortcuts); ++i)
        count += shortcuts[i].effect != nullptr;
    return count;
}

bool HasShortcuts(const std::vector<EffectAlias>& shortcuts) {
    for (unsigned long i = 0; i < SlotCount(shortcuts); ++i)
        if (shortcuts[i].effect != nullptr)
            return true;
    return false;
}

std::vector<std::string> GetShortcutsAlias(const std::vector<EffectAlias>& shortcuts) {
    std::vector<std::string> labels;
    for (unsigned long i = 0; i < SlotCount(shortcuts) && shortcuts[i].effect != nullptr; ++i)
        labels.push_back(shortcuts[i].alias);
    return labels;
}

const EffectData* GetActualEffect(const std::vector<EffectAlias>& aliases, const EffectData* effect) {
    if (effect == nullptr)
        return nullptr;
    for (const EffectAlias& entry : aliases)
        if (entry.effect == effect && entry.override != nullptr)
            return entry.override;
    return effect;
}
