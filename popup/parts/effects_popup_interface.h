#pragma once

struct EffectData;
class EffectSlot;

// What a list row may ask of the popup it sits in. Kept abstract so rows can be built and exercised
// without the window.
class EffectsPopupInterface {
public:
    virtual ~EffectsPopupInterface() = default;
    virtual void AddToList(const EffectData* effect, bool blacklist) = 0;
    virtual void AddToShortcuts(const EffectData* effect) = 0;
    virtual void ReplaceToShortcuts(const EffectData* effect, unsigned long index) = 0;
    virtual void SetSelected(EffectSlot* slot) = 0;
};
