#include "popup/effects_popup_window.h"

#include "popup/effects_popup_theme.h"

#include "gallery/capture_store.h"
#include "gallery/gallery_popup_window.h"

#include "nimbit/filesystem/file_operations.h"
#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/native_file_shell.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/widget_themes.h"
#include "nimbit/utils/timer.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"
#include "popup/search_data_files.h"
#include "popup/user_lists.h"
#include "preferences/preferences_window.h"

#include <algorithm>
#include <cstdint>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

// Key-down codes that leave the compact popup open. They were picked as modifier keys, but key_down
// carries the key's character and modifiers send no key_down at all, so what they let through is the
// digits '7' and '8' and the control character DC2, which no key types.
constexpr unsigned long long DigitSeven = '7', DigitEight = '8', ControlCharDc2 = 0x12;

} // namespace

EffectsPopupWindow::EffectsPopupWindow(PreferencesData& prefs, std::function<int32_t()> poll)
    : prefs(prefs), newsPoll(std::move(poll)) {
    create("Effects Popup", {0, 0, SearchWidth, SearchTopHeight},
           window_style_borderless | window_style_floating, nullptr);
    Build();
}

EffectsPopupWindow::~EffectsPopupWindow() {
    gallery.reset();
    ClearRows();
}

void EffectsPopupWindow::Build() {
    settingsFolder = UserSettingsFolder();
    searchDataFile = settingsFolder.append(file_path(SearchDataFileName));
    shortcutsDataFile = settingsFolder.append(file_path(ShortcutsDataFileName));
    InitThemes();

    widget& root = get_root();
    searchIcon.create(root, {14, 8, 30, 30});
    searchField.create(root, {51, 8, SearchWidth - 281, 30});
    searchField.get_theme().set(theme_keys::input_font_name, std::string("Arial"));
    listFrame.create(root, {1, SearchTopHeight, SearchWidth - 2, 0});
    listContent.create(listFrame, {0, 0, SearchWidth - 2, 0});
    listContent.show(true);
    scrollBar.create(root, {SearchWidth - 18, SearchTopHeight, ScrollBarWidth, 0});
    scrollBar.set_scroll_panel(&listContent);
    scrollBar.add_wheel_area(listFrame); // the wheel over the rows scrolls them
    scrollBar.set_step(RowHeight);
    shortcutsBar.create(root, {0, 44, SearchWidth, EffectsShortcutsBar::Height});
    for (generic_button& b : toolButtons)
        b.create(root, {0, 8, ButtonSize, ButtonSize});
    toolButtons[ScreenshotButton].add_tooltip("Take a screenshot (Shift + F5)");
    toolButtons[GalleryButton].add_tooltip("Open Gallery");
    toolButtons[ExportButton].add_tooltip("Export");
    toolButtons[SettingsButton].add_tooltip("Settings");
    newsBadge.create(root, {SearchWidth - 19, 1, NewsSize, NewsSize});
    // Created last so that it lies over every control; clicks pass through it.
    flash.create(root, {0, 0, SearchWidth, 0});
    flash.set_mouse_transparent(true);
    newsBadge.get_theme().set(theme_keys::button_font_size, 9.0f);
    newsBadge.hide(); // until the news check reports something new

    auto& ev = event_manager::instance();
    ev.add_event(&searchField, this, event_type::value_changed,
                 [this](const event_info&) { SearchChanged(); });
    ev.add_event(&searchField, this, event_type::key_down, &EffectsPopupWindow::OnInputKeyDown);
    ev.add_event(&searchField, this, event_type::pressed,
                 [this](const event_info&) { ApplySelectedEffect(); });
    ev.add_event(&searchField, this, event_type::cancelled,
                 [this](const event_info&) { ApplySelectedEffect(); });
    ev.add_event(this, this, event_type::key_down, &EffectsPopupWindow::OnKeyDown);
    ev.add_event(this, this, event_type::key_char, &EffectsPopupWindow::OnKeyChar);
    ev.add_event(this, this, event_type::focus_gained, &EffectsPopupWindow::OnFocusGained);
    ev.add_event(this, this, event_type::focus_lost, &EffectsPopupWindow::OnFocusLost);
    ev.add_event(&root, this, event_type::timer, &EffectsPopupWindow::Timer);
    // The root is a plain widget: the theme's window colour shows wherever no control covers it.
    ev.add_event(&root, this, event_type::draw, [this](const event_info&) {
        drawer& d = get_drawer();
        d.set_brush_color(get_root().get_theme().get<vec4>(theme_keys::default_back_color));
        d.draw_rect({0, 0, get_root().get_rect().w, get_root().get_rect().h});
    });
    ev.add_event(&flash, this, event_type::draw, [this](const event_info&) {
        drawer& d = get_drawer();
        d.set_brush_color({1, 1, 1, FlashOpacity * std::min(fade, 1.0f)});
        d.draw_rect({0, 0, flash.get_rect().w, flash.get_rect().h});
    });
    ev.add_event(&toolButtons[ScreenshotButton], this, event_type::pressed,
                 &EffectsPopupWindow::OnScreenshotButton);
    for (int b = GalleryButton; b <= LogoButton; ++b)
        ev.add_event(&toolButtons[b], this, event_type::pressed, &EffectsPopupWindow::OnButton);
    ev.add_event(&newsBadge, this, event_type::pressed, &EffectsPopupWindow::OnButton);
    ev.add_event(&shortcutsBar, this, event_type::pressed, &EffectsPopupWindow::OnShortcutButton);

    ReadDataFiles();
    usage.Load(settingsFolder, CurrentNewsTime());
    SwitchTheme(prefs.theme, true);
    root.add_timer(NewsTimer, 1000);
    if (!SettingsFileExists(settingsFolder))
        SavePreferences(false);
}

void EffectsPopupWindow::ReadDataFiles() {
    ReadSearchDataFile(blacklist, aliases, catalogue, ChooseReadFolder(SearchDataFileName));
    ReadShortcutsDataFile(shortcuts, catalogue, ChooseReadFolder(ShortcutsDataFileName));
}

void EffectsPopupWindow::SetEffectData(const std::vector<EffectData>& entries) {
    // The rows and lists point into the old catalogue: drop them before it goes.
    ClearRows();
    results = {};
    search.usage.clear(); // ranked again for the new catalogue when wanted
    catalogue = entries;
    // The host's catalogue comes with its folded names; a catalogue made elsewhere gets them here.
    for (EffectData& entry : catalogue)
        if (entry.folded_name.empty() && !entry.name.empty())
            PrepareSearchNames(entry);
    ReadDataFiles();
    if (is_shown())
        SearchChanged();
}

void EffectsPopupWindow::WriteFile() {
    WriteSearchDataFiles(blacklist, aliases, shortcuts, settingsFolder);
}

void EffectsPopupWindow::SavePreferences(bool writeLists) {
    ::SavePreferences(prefs, blacklist, aliases, shortcuts, settingsFolder, writeLists);
}

// --- commands ------------------------------------------------------------------------------------------

uint32_t EffectsPopupWindow::Show(const std::string& projectName, const std::string& compName,
                                  const std::string& layerName, PopupCommand command) {
    return Show(std::string_view(projectName), std::string_view(compName), std::string_view(layerName),
                command);
}

uint32_t EffectsPopupWindow::Show(std::string_view const& a, std::string_view const& b,
                                  std::string_view const& c, PopupCommand const& command) {
    showTexts = {std::string(a), std::string(b), std::string(c)};
    screenshotMode = !b.empty();
    searchMode = !c.empty();
    switch (command.kind) {
    case PopupCommand::Show:
        Open();
        break;
    case PopupCommand::Screenshot:
        TakeScreenshot(false);
        break;
    case PopupCommand::Export:
        ExportScreenshot();
        break;
    case PopupCommand::Gallery:
        OpenGallery();
        break;
    case PopupCommand::Preferences:
        OpenPreferences();
        break;
    case PopupCommand::Logo:
        Logo();
        break;
    case PopupCommand::SaveSettings:
        SavePreferences(true);
        break;
    case PopupCommand::NewsCount:
        return static_cast<uint32_t>(newsCount);
    default:
        break;
    }
    return NoCommandResult;
}

int EffectsPopupWindow::TopHeight() const {
    return (searchMode ? SearchTopHeight : CompactTopHeight) + (shortcutsShown ? ShortcutsBarExtra : 0);
}

int EffectsPopupWindow::ListWidth(bool overflow) const {
    return get_rect().w - (overflow ? 20 : 2);
}

void EffectsPopupWindow::Open() {
    if (screenshotBusy)
        return;
    const int width = searchMode ? SearchWidth : CompactWidth;
    for (widget* w : std::initializer_list<widget*>{&searchField, &searchIcon, &listFrame, &scrollBar})
        w->show(searchMode);
    shortcutsBar.hide();
    shortcutsShown = false;
    if (HasShortcuts(shortcuts) && searchMode) {
        shortcutsShown = true;
        shortcutsBar.show(true);
        shortcutsBar.UpdateList(shortcuts, colors);
    }
    const ivec4 frame = get_rect();
    set_rect({frame.x, frame.y, width, TopHeight()});
    LayoutTop();
    toolButtons[ScreenshotButton].enable(searchMode || screenshotMode);
    toolButtons[ExportButton].enable(searchMode || screenshotMode);
    show();
}

void EffectsPopupWindow::LayoutTop() {
    const int width = get_rect().w;
    for (int b = 0; b < 5; ++b)
        toolButtons[b].set_rect({width - ToolButtonRight[b], ToolButtonTop, ButtonSize, ButtonSize});
    newsBadge.set_rect({width - 19, 1, NewsSize, NewsSize});
    searchField.set_rect({51, 8, width - 281, 30});
    shortcutsBar.set_rect({0, 44, width, EffectsShortcutsBar::Height});
}

// --- focus and keys ------------------------------------------------------------------------------------

void EffectsPopupWindow::OnFocusGained(const event_info&) {
    if (searchMode) {
        get_root().focus(focus_cause::keyboard);
        searchField.set_text("", true);
        scrollBar.set_value(0);
        get_root().add_timer(FocusTimer, 250, true);
    }
    const ivec2 pointer = mouse::get_position(nullptr);
    const ivec4 frame = get_rect();
    set_rect({pointer.x - frame.w / 2, pointer.y - frame.h, frame.w, frame.h});
    force_in_screen();
}

void EffectsPopupWindow::OnFocusLost(const event_info&) {
    hide();
}

void EffectsPopupWindow::OnInputKeyDown(const event_info& e) {
    if (rows.empty())
        return;
    if (selected == nullptr) {
        SetSelected(rows.front().get());
        scrollBar.set_value(0);
        return;
    }
    const size_t count = rows.size();
    size_t index = selected->GetIndex();
    switch (e.data) {
    case event_key::up:
        index = index == 0 ? count - 1 : index - 1;
        break;
    case event_key::down:
        index = index + 1 >= count ? 0 : index + 1;
        break;
    case event_key::tab:
        if (selected->GetEffect() != nullptr && selected->GetEffect()->is_preset)
            index = 0;
        else if (results.FirstPreset() < count)
            index = results.FirstPreset();
        break;
    default:
        break;
    }
    SetSelected(rows[index].get());
    ScrollIntoView(index);
}

void EffectsPopupWindow::ScrollIntoView(size_t index) {
    int top = static_cast<int>(index) * RowHeight;
    if (effectsHeader != nullptr)
        top += HeaderHeight;
    if (presetsHeader != nullptr && rows[index]->GetEffect() != nullptr &&
        rows[index]->GetEffect()->is_preset)
        top += HeaderHeight;
    scrollBar.reveal(top, RowHeight, listFrame.get_rect().h);
}

void EffectsPopupWindow::OnKeyDown(const event_info& e) {
    if (e.data == event_key::f5) {
        if (keyboard::is_key_down(keyboard::shift))
            TakeScreenshot(false);
        else
            OpenGallery();
        return;
    }
    if (!searchMode && e.data != ControlCharDc2 && e.data != DigitSeven && e.data != DigitEight)
        hide();
}

void EffectsPopupWindow::OnKeyChar(const event_info& e) {
    const unsigned long long unit = pair_low(e.data);
    // Escape closes the popup. Its key press has already emptied the search field and handed the
    // focus to the root, so the field's own cancel never fires: the command arrives here instead.
    if (unit == 27) {
        hide();
        return;
    }
    // A digit picks a shortcut slot unless it continues a search: once the search field holds other
    // text, the digit is part of what the user types ("3d", "cc 2").
    const bool typing = searchMode && searchField.get_inside().has_focus() &&
                        searchField.get_text() != std::string(1, static_cast<char>(unit));
    if (unit >= '1' && unit <= '9' && !typing) {
        const size_t slot = unit - '1';
        if (slot < shortcuts.size() && shortcuts[slot].effect != nullptr) {
            Fire(GetActualEffect(aliases, shortcuts[slot].effect));
            return;
        }
    }
    if (!searchMode)
        hide();
}

void EffectsPopupWindow::Timer(const event_info& e) {
    switch (e.data) {
    case FocusTimer:
        searchField.focus(focus_cause::keyboard);
        break;
    case NewsTimer: {
        const int32_t count = newsPoll ? newsPoll() : -1;
        if (count < 0)
            break;
        newsCount = count;
        get_root().remove_timer(NewsTimer);
        newsBadge.set_text(std::to_string(count));
        newsBadge.show(count > 0);
        break;
    }
    case FadeTimer:
        fade = std::max(0.0f, fade - 0.1f);
        if (fade <= 0.0f) {
            get_root().remove_timer(FadeTimer);
            flash.hide();
        }
        flash.update(false);
        break;
    default:
        break;
    }
}

// --- applying ------------------------------------------------------------------------------------------

void EffectsPopupWindow::Fire(const EffectData* effect) {
    event_manager::instance().fire_event(this, event_type::pressed, pack_pointer(effect));
    hide();
    // Once per application, after the popup is gone: never on the way of a keystroke.
    if (effect != nullptr) {
        usage.Record(*effect, CurrentNewsTime());
        usage.Save(settingsFolder);
        search.usage.clear();
    }
}

void EffectsPopupWindow::ForgetUsage() {
    usage.Clear();
    UsageRecord::Remove(settingsFolder);
    search.usage.clear();
}

void EffectsPopupWindow::ApplyEffect(const event_info& e) {
    if (e.type == event_type::mouse_up && e.data == static_cast<unsigned long long>(mouse::button::right))
        return;
    if ((e.type == event_type::key_down || e.type == event_type::key_down_raw) &&
        e.data != event_key::return_key)
        return;
    auto* slot = dynamic_cast<EffectSlot*>(e.sender);
    if (slot == nullptr || slot->GetEffect() == nullptr)
        return;
    Fire(GetActualEffect(aliases, slot->GetEffect()));
}

void EffectsPopupWindow::ApplySelectedEffect() {
    if (selected == nullptr || selected->GetEffect() == nullptr) {
        hide();
        return;
    }
    Fire(GetActualEffect(aliases, selected->GetEffect()));
}

void EffectsPopupWindow::OnShortcutButton(const event_info& e) {
    const unsigned long long number = e.data;
    if (number < 1 || number > shortcuts.size() || shortcuts[number - 1].effect == nullptr)
        return;
    Fire(GetActualEffect(aliases, shortcuts[number - 1].effect));
}

void EffectsPopupWindow::OnButton(const event_info& e) {
    if (e.sender == &toolButtons[GalleryButton])
        OpenGallery();
    else if (e.sender == &toolButtons[SettingsButton])
        OpenPreferences();
    else if (e.sender == &toolButtons[LogoButton] || e.sender == &newsBadge)
        Logo();
    else if (e.sender == &toolButtons[ExportButton])
        ExportScreenshot();
}

void EffectsPopupWindow::OnScreenshotButton(const event_info&) {
    TakeScreenshot(false);
}

// --- list --------------------------------------------------------------------------------------------

void EffectsPopupWindow::ClearRows() {
    selected = nullptr;
    // Detaching everything at once is linear; the rows then die without a parent to notify.
    listContent.remove_all_children();
    rows.clear();
    effectsHeader.reset();
    presetsHeader.reset();
}

void EffectsPopupWindow::SetSelected(EffectSlot* slot) {
    if (slot == selected)
        return;
    if (selected != nullptr)
        selected->SetSelected(false);
    selected = slot;
    if (selected != nullptr)
        selected->SetSelected(true);
}

void EffectsPopupWindow::SearchChanged() {
    const std::string text = searchField.get_text();
    const bool barWanted = text.empty() && searchMode && HasShortcuts(shortcuts);
    if (barWanted != shortcutsShown || (barWanted && shortcutsBar.GetButtons().empty())) {
        shortcutsShown = barWanted;
        shortcutsBar.show(barWanted);
        if (barWanted)
            shortcutsBar.UpdateList(shortcuts, colors);
    }

    ClearRows();
    rows.reserve(catalogue.size());
    shortcutLabels = GetShortcutsAlias(shortcuts);
    // The scores are worked out once per change of the record or catalogue, not per keystroke.
    if (!prefs.recentFirst)
        search.usage.clear();
    else if (search.usage.size() != catalogue.size() || catalogue.empty())
        search.usage = usage.Scores(catalogue, CurrentNewsTime());
    search.options.ignore_accents = prefs.ignoreAccents;
    search.Run(text, catalogue, blacklist, aliases, results);

    const int width = listFrame.get_rect().w;
    int y = 0;
    auto activate = [this](const event_info& e) {
        ApplyEffect(e);
    };
    for (const SearchRow& row : results.Rows()) {
        if (row.kind != SearchRowKind::Entry) {
            const HeaderKind kind = row.kind == SearchRowKind::PresetsHeader      ? HeaderKind::Presets
                                    : row.kind == SearchRowKind::EffectsHeader    ? HeaderKind::Effects
                                    : row.kind == SearchRowKind::DidYouMeanHeader ? HeaderKind::DidYouMean
                                                                                  : HeaderKind::NoMatches;
            auto header = std::make_unique<HeaderSlot>(kind);
            StyleHeader(*header, *colors);
            header->create(listContent, {0, y, width, HeaderHeight});
            header->show(true);
            y += HeaderHeight;
            (row.kind == SearchRowKind::PresetsHeader ? presetsHeader : effectsHeader) = std::move(header);
            continue;
        }
        const SearchEntry& entry = results.entries[row.entry];
        auto slot = std::make_unique<EffectSlot>(*this, true);
        slot->SetEffect(entry.effect, entry.user_entry, &shortcutLabels);
        slot->SetHighlights(results.Highlights(entry));
        slot->SetIndex(rows.size());
        slot->SetActivate(activate);
        StyleRow(*slot, *colors);
        slot->create(listContent, {0, y, width, RowHeight});
        slot->show(true);
        y += RowHeight;
        rows.push_back(std::move(slot));
    }
    if (!rows.empty())
        SetSelected(rows.front().get());
    contentHeight = y;
    Resize();
    scrollBar.set_value(0);
}

void EffectsPopupWindow::Resize() {
    const ivec4 frame = get_rect();
    const int top = TopHeight();
    const int listHeight = std::min(contentHeight, MaxListHeight);
    const bool overflow = contentHeight > listHeight;
    const int listWidth = ListWidth(overflow);
    listFrame.set_rect({1, top, listWidth, listHeight});
    if (listContent.get_rect().w != listWidth) {
        for (auto& row : rows)
            row->set_rect({0, row->get_rect().y, listWidth, RowHeight});
        for (HeaderSlot* h : {effectsHeader.get(), presetsHeader.get()})
            if (h != nullptr)
                h->set_rect({0, h->get_rect().y, listWidth, HeaderHeight});
    }
    listContent.set_rect({0, listContent.get_rect().y, listWidth, contentHeight});
    scrollBar.set_rect({frame.w - 18, top, ScrollBarWidth, listHeight});
    scrollBar.show(overflow && searchMode);
    scrollBar.update_bar();
    const int height = listHeight + (contentHeight > 0 ? 1 : 0) + top;
    set_rect({frame.x, frame.y, frame.w, height});
    force_in_screen();
}

// --- the user's lists ------------------------------------------------------------------------------

void EffectsPopupWindow::AddToList(const EffectData* effect, bool toBlacklist) {
    if (effect == nullptr)
        return;
    ::AddToList(blacklist, aliases, effect, toBlacklist);
    WriteFile();
    SearchChanged();
}

void EffectsPopupWindow::AddToShortcuts(const EffectData* effect) {
    if (effect != nullptr && ::AddToShortcuts(shortcuts, effect))
        WriteFile();
    hide();
}

void EffectsPopupWindow::ReplaceToShortcuts(const EffectData* effect, unsigned long index) {
    if (effect != nullptr && ::ReplaceToShortcuts(shortcuts, effect, index))
        WriteFile();
    hide();
}

// --- tools ---------------------------------------------------------------------------------------

// A pasted image is named for the moment alone: it need not come from the open composition.
void EffectsPopupWindow::Paste() {
    bitmap image;
    if (image.load_image_from_clipboard())
        CaptureStore::SaveCapture(image, prefs.captureFolder, "", "");
}

void EffectsPopupWindow::TakeScreenshot(bool from_clipboard) {
    // The capture runs modal work (the controller renders; dialogs may open): the chord must not
    // reopen the popup meanwhile.
    screenshotBusy = true;
    fade = 1.1f;
    const ivec4 area = get_root().get_rect();
    flash.set_rect({0, 0, area.w, area.h});
    flash.show(true);
    get_root().add_timer(FadeTimer, 100);
    event_manager::instance().fire_event(this, event_type::custom,
                                         static_cast<uint64_t>(PopupRequest::CaptureToFolder));
    if (from_clipboard) {
        bitmap image;
        if (image.load_image_from_clipboard())
            CaptureStore::SaveCapture(image, prefs.captureFolder, showTexts[0], showTexts[1]);
    }
    RefreshGallery();
    screenshotBusy = false;
}

void EffectsPopupWindow::ExportScreenshot() {
    screenshotBusy = true;
    event_manager::instance().fire_event(this, event_type::custom,
                                         static_cast<uint64_t>(PopupRequest::CaptureToPng));
    screenshotBusy = false;
}

void EffectsPopupWindow::Logo() {
    file_shell::open_link(std::string(ProductPage));
    newsBadge.hide();
    prefs.newsTime = CurrentNewsTime();
    SavePreferences(true);
}

void EffectsPopupWindow::OpenGallery() {
    if (!gallery)
        gallery = std::make_unique<GalleryPopupWindow>(colors, prefs);
    gallery->Show(colors);
}

void EffectsPopupWindow::RefreshGallery() {
    if (gallery && gallery->is_shown())
        gallery->RefreshList();
}

// The window edits the record and the lists in place; once it closes, whatever changed is put in
// effect here and saved.
void EffectsPopupWindow::OpenPreferences() {
    {
        PreferencesWindow window(*this, themes, prefs, blacklist, aliases, shortcuts, catalogue);
        window.Run();
    }
    SwitchTheme(prefs.theme, false);
    // The shortcuts bar and the rows of the current search, hidden or not: the window took the focus,
    // which hides the popup, and a later Show starts from what is built here.
    SearchChanged();
    SavePreferences(true);
}
