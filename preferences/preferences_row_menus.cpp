// The list rows' context menus and what their items do: the pickers, the alias popup, and the edits
// of the lists they lead to.

#include "preferences/preferences_window.h"

#include "host/effect_data.h"
#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/popup_menu.h"
#include "nimbit/utils/string_utils.h"
#include "popup/user_lists.h"
#include "preferences/preferences_alias_popup.h"

#include <algorithm>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

ivec2 MenuPoint(unsigned long long data) {
    return {static_cast<int32_t>(pair_low(data)), static_cast<int32_t>(pair_high(data))};
}

bool HasOwnAlias(const EffectAlias& entry) {
    return entry.effect != nullptr && entry.alias != entry.effect->search_name;
}

} // namespace

const EffectData* PreferencesWindow::PickEffect(std::string_view title) {
    PreferencesEditEffectPopup picker(this, {}, colours, title, catalogue);
    CentreOver(picker);
    if (!picker.Run())
        return nullptr;
    return picker.GetResult().effect;
}

bool PreferencesWindow::AskText(std::string_view title, std::string& text) {
    PreferencesAliasPopup editor(this, {}, colours, title, text);
    CentreOver(editor);
    if (!editor.Run())
        return false;
    text = editor.GetAlias();
    return true;
}

void PreferencesWindow::ShowShortcutsActions(PreferencesEffectSlot* slot, event_type,
                                             unsigned long long data) {
    if (slot == nullptr || slot->GetIndex() >= shortcuts.size())
        return;
    // The rows are rebuilt after an edit: only the index is used once the menu has closed.
    const size_t index = slot->GetIndex();
    const EffectData* effect = shortcuts[index].effect;
    popup_menu menu;
    menu.add_item(EntryItem, effect != nullptr ? effect->name : "Empty Slot");
    menu.add_separator(SeparatorItem);
    menu.add_item(EditLabelItem, effect != nullptr ? "Edit Label" : "New Shortcut");
    menu.add_item(ClearSlotItem, "Clear");
    const uint32_t chosen = menu.show(*this, MenuPoint(data), false);
    if (chosen == EntryItem || (chosen == EditLabelItem && effect == nullptr)) {
        pendingIndex = index;
        if (const EffectData* picked = PickEffect("Set Shortcut"))
            SetShortcutEffect({picked});
    } else if (chosen == EditLabelItem) {
        std::string label = shortcuts[index].alias;
        if (!AskText("Edit Label", label))
            return;
        shortcuts[index].alias = label.empty() ? MakeShortcutLabel(effect->name) : label;
        GetPanel(PreferencesListKind::Shortcuts).Refresh();
    } else if (chosen == ClearSlotItem) {
        shortcuts[index] = EffectAlias{};
        GetPanel(PreferencesListKind::Shortcuts).Refresh();
    }
}

void PreferencesWindow::ShowFavoritesActions(PreferencesEffectSlot* slot, event_type,
                                             unsigned long long data) {
    if (slot == nullptr || slot->GetIndex() >= aliases.size() || aliases[slot->GetIndex()].effect == nullptr)
        return;
    const size_t index = slot->GetIndex();
    const EffectAlias& entry = aliases[index];
    const bool ownAlias = HasOwnAlias(entry);
    popup_menu menu;
    menu.add_item(EntryItem, entry.effect->name);
    menu.add_separator(SeparatorItem);
    menu.add_item(RemoveFavoriteItem, "Remove Favorite");
    if (ownAlias) {
        menu.add_item(EditAliasItem, "Edit Alias");
        menu.add_item(ClearAliasItem, "Clear Alias");
    } else {
        menu.add_item(AddAliasItem, "Add Alias");
    }
    if (entry.override != nullptr)
        menu.add_item(ClearOverrideItem, "Clear Override");
    const uint32_t chosen = menu.show(*this, MenuPoint(data), false);
    switch (chosen) {
    case EntryItem:
        pendingIndex = index;
        if (const EffectData* picked = PickEffect("Set Override"))
            SetOverridePreset({picked});
        return;
    case RemoveFavoriteItem:
        aliases.erase(aliases.begin() + static_cast<std::ptrdiff_t>(index));
        break;
    case AddAliasItem:
    case EditAliasItem: {
        std::string alias = ownAlias ? aliases[index].alias : std::string();
        if (!AskText(chosen == AddAliasItem ? "Add Alias" : "Edit Alias", alias))
            return;
        // The typed word is matched in lower case; an empty one leaves the search name.
        alias = string_lower(alias);
        aliases[index].alias = alias.empty() ? aliases[index].effect->search_name : alias;
        break;
    }
    case ClearAliasItem:
        aliases[index].alias = aliases[index].effect->search_name;
        break;
    case ClearOverrideItem:
        aliases[index].override = nullptr;
        break;
    default:
        return;
    }
    GetPanel(PreferencesListKind::Favorites).Refresh();
}

void PreferencesWindow::ShowBlacklistActions(PreferencesEffectSlot* slot, event_type,
                                             unsigned long long data) {
    if (slot == nullptr || slot->GetIndex() >= blacklist.size())
        return;
    const size_t index = slot->GetIndex();
    const EffectData* effect = blacklist[index].effect;
    popup_menu menu;
    menu.add_item(EntryItem, effect != nullptr ? effect->name : blacklist[index].alias);
    menu.enable_item(EntryItem, false);
    menu.add_separator(SeparatorItem);
    menu.add_item(RemoveItem, "Remove");
    if (menu.show(*this, MenuPoint(data), false) != RemoveItem)
        return;
    blacklist.erase(blacklist.begin() + static_cast<std::ptrdiff_t>(index));
    GetPanel(PreferencesListKind::Blacklist).Refresh();
}

void PreferencesWindow::AddNewEffect(PreferencesEffectNew* row, event_type, unsigned long long) {
    if (row == nullptr)
        return;
    const PreferencesListKind kind = row->GetKind();
    const EffectData* effect = PickEffect("Add New Effect");
    if (effect == nullptr)
        return;
    std::vector<EffectAlias>& list = List(kind);
    if (kind == PreferencesListKind::Shortcuts) {
        if (!::AddToShortcuts(list, effect))
            return; // every slot is taken
    } else {
        // An entry that is already there, as the picker would add it, is not added twice.
        const bool present = std::any_of(list.begin(), list.end(), [effect](const EffectAlias& e) {
            return e.effect == effect && e.alias == effect->search_name;
        });
        if (present)
            return;
        list.push_back(EffectAlias{effect->search_name, effect, nullptr});
    }
    GetPanel(kind).Refresh();
}

void PreferencesWindow::SetShortcutEffect(EffectSearchResult result) {
    if (result.effect == nullptr || pendingIndex >= shortcuts.size() || pendingIndex >= ShortcutSlotCount)
        return;
    EffectAlias& slot = shortcuts[pendingIndex];
    slot.effect = result.effect;
    if (slot.alias.empty())
        slot.alias = MakeShortcutLabel(result.effect->name);
    GetPanel(PreferencesListKind::Shortcuts).Refresh();
}

void PreferencesWindow::SetOverridePreset(EffectSearchResult result) {
    if (result.effect == nullptr || pendingIndex >= aliases.size())
        return;
    aliases[pendingIndex].override = result.effect;
    GetPanel(PreferencesListKind::Favorites).Refresh();
}
