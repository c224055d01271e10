#pragma once

#include <string_view>
#include <unordered_map>
#include <vector>

struct EffectData;

// Finds catalogue entries by their lower-case search name: the first entry in catalogue order wins,
// as a front-to-back scan would find it. Reading the user's files looks up every line, so a hash
// keeps that linear in the file. Holds views into the catalogue, which must outlive it unchanged.
class CatalogueIndex {
public:
    explicit CatalogueIndex(const std::vector<EffectData>& catalogue);

    // The first entry whose search name equals name byte for byte, or null.
    const EffectData* Find(std::string_view name) const;

private:
    std::unordered_map<std::string_view, const EffectData*> byName;
};
