#include "popup/catalogue_index.h"

#include "host/effect_data.h"

CatalogueIndex::CatalogueIndex(const std::vector<EffectData>& catalogue) {
    byName.reserve(catalogue.size());
    for (const EffectData& entry : catalogue)
        byName.try_emplace(entry.search_name, &entry);
}

const EffectData* CatalogueIndex::Find(std::string_view name) const {
    auto it = byName.find(name);
    return it == byName.end() ? nullptr : it->second;
}
