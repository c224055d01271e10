#pragma once

#include <string>
#include <string_view>
#include <vector>

struct EffectData;
struct EffectAlias;

// Operations on the user's lists, called by the popup window and, through it, by the rows' context
// menus. Saving and hiding the popup stay with the caller; the return values say when a save is due.

// Number of numbered shortcut slots on the shortcuts bar.
inline constexpr unsigned long ShortcutSlotCount = 9;

// Appends the effect to the blacklist or, as a favorite, to the aliases. No duplicate check.
void AddToList(std::vector<EffectAlias>& blacklist, std::vector<EffectAlias>& aliases,
               const EffectData* effect, bool toBlacklist);

// Puts the effect into the first empty slot with a label made from its name. False when every slot
// is taken (nothing changes).
bool AddToShortcuts(std::vector<EffectAlias>& shortcuts, const EffectData* effect);

// Replaces the effect and label of the occupied slot at index (0-based). False, with nothing changed,
// when the index lies outside the nine slots or the slot is empty.
bool ReplaceToShortcuts(std::vector<EffectAlias>& shortcuts, const EffectData* effect, unsigned long index);

unsigned long CountShortcuts(const std::vector<EffectAlias>& shortcuts);
bool HasShortcuts(const std::vector<EffectAlias>& shortcuts);
// The slots' labels in slot order, up to the first empty slot.
std::vector<std::string> GetShortcutsAlias(const std::vector<EffectAlias>& shortcuts);

// The effect to apply for effect: the override of the first aliases entry for it that has one,
// otherwise effect itself.
const EffectData* GetActualEffect(const std::vector<EffectAlias>& aliases, const EffectData* effect);

// A shortcut button's label: the first three bytes of the display name (fewer for a shorter name),
// the first one upper-cased.
std::string MakeShortcutLabel(std::string_view displayName);
