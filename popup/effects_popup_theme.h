#pragma once

// Applying a colour theme to the popup's pieces. EffectsPopupWindow::SwitchTheme (defined beside
// these) styles the whole window; the list's rows and titles are also styled one by one as the
// search creates them.

struct UIColors;
class EffectSlot;
class HeaderSlot;

// The row's background and text colours.
void StyleRow(EffectSlot& row, UIColors const& colours);
// The title's background and text colours, chosen by the group it heads.
void StyleHeader(HeaderSlot& header, UIColors const& colours);
