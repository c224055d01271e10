#include "popup/usage_record.h"

#include "host/effect_data.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/write_file_atomic.h"
#include "nimbit/utils/string_utils.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <tuple>

namespace {

// Five hundred lines take a few tens of kilobytes; anything past this is not ours.
constexpr size_t MaxFileSize = 1u << 20;

std::string KeyOf(bool preset, std::string_view name) {
    std::string key(1, preset ? 'p' : 'e');
    key += nimbit::string_lower(name);
    return key;
}

// A number and the blank after it, taken off the front of line.
template <class T> bool TakeNumber(std::string_view& line, T& value) {
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), value);
    if (error != std::errc() || end == line.data() + line.size() || *end != ' ')
        return false;
    line.remove_prefix(static_cast<size_t>(end - line.data()) + 1);
    return true;
}

} // namespace

double UsageRecord::Weigh(const Use& use, int64_t now) {
    // A use dated in the future (a clock set back) counts as made now.
    const double age = std::max<double>(0, static_cast<double>(now) - static_cast<double>(use.last));
    return use.times * std::exp2(-age / HalfLife);
}

void UsageRecord::Record(const EffectData& entry, int64_t now) {
    if (entry.name.empty() || entry.name.find_first_of("\r\n") != std::string::npos)
        return; // it could not be written as one line
    Use& use = uses[KeyOf(entry.is_preset, entry.name)];
    use.times = use.times == UINT32_MAX ? use.times : use.times + 1;
    use.last = std::max(use.last, now);
    use.name = entry.name;
    Trim(now);
}

double UsageRecord::Score(const EffectData& entry, int64_t now) const {
    const auto found = uses.find(KeyOf(entry.is_preset, entry.name));
    return found == uses.end() ? 0.0 : Weigh(found->second, now);
}

std::vector<float> UsageRecord::Scores(const std::vector<EffectData>& catalogue, int64_t now) const {
    std::vector<float> scores(catalogue.size(), 0.0f);
    if (uses.empty())
        return scores;
    std::string entryKey;
    for (size_t i = 0; i < catalogue.size(); ++i) {
        // The search name is the lower-cased name: no need to lower it again per entry.
        entryKey.assign(1, catalogue[i].is_preset ? 'p' : 'e');
        entryKey += catalogue[i].search_name;
        if (const auto found = uses.find(entryKey); found != uses.end())
            scores[i] = static_cast<float>(Weigh(found->second, now));
    }
    return scores;
}

void UsageRecord::Parse(std::string_view text, int64_t now) {
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        Use use;
        if (!TakeNumber(line, use.times) || !TakeNumber(line, use.last) || use.times == 0 ||
            line.size() < 3 || (line[0] != 'e' && line[0] != 'p') || line[1] != ' ')
            continue;
        use.name = nimbit::trim(line.substr(2));
        if (use.name.empty())
            continue;
        // A name written twice (a file edited by hand) adds up rather than losing one of them.
        Use& kept = uses[KeyOf(line[0] == 'p', use.name)];
        kept.times = static_cast<uint32_t>(std::min<uint64_t>(uint64_t{kept.times} + use.times, UINT32_MAX));
        kept.last = std::max(kept.last, use.last);
        kept.name = std::move(use.name);
    }
    Trim(now);
}

std::string UsageRecord::Format() const {
    std::vector<const std::pair<const std::string, Use>*> order;
    order.reserve(uses.size());
    for (const auto& entry : uses)
        order.push_back(&entry);
    std::sort(order.begin(), order.end(), [](auto* a, auto* b) {
        return std::tie(b->second.times, b->second.last, a->first) <
               std::tie(a->second.times, a->second.last, b->first);
    });
    std::string out;
    for (const auto* entry : order) {
        out += std::to_string(entry->second.times) + ' ' + std::to_string(entry->second.last) + ' ';
        out += entry->first[0];
        out += ' ';
        out += entry->second.name;
        out += '\n';
    }
    return out;
}

void UsageRecord::Trim(int64_t now) {
    if (uses.size() <= MaxEntries)
        return;
    std::vector<std::pair<double, const std::string*>> ranked;
    ranked.reserve(uses.size());
    for (const auto& [entryKey, use] : uses)
        ranked.emplace_back(Weigh(use, now), &entryKey);
    // Lowest score first; equal scores by key, so that which one goes never depends on the map.
    std::sort(ranked.begin(), ranked.end(), [](const auto& a, const auto& b) {
        return a.first != b.first ? a.first < b.first : *a.second < *b.second;
    });
    std::vector<std::string> dropped;
    for (size_t i = 0; i + MaxEntries < ranked.size(); ++i)
        dropped.push_back(*ranked[i].second);
    for (const std::string& gone : dropped)
        uses.erase(gone);
}

void UsageRecord::Load(const nimbit::file_path& folder, int64_t now) {
    uses.clear();
    if (folder.empty())
        return;
    std::FILE* file = std::fopen(folder.append(UsageFileName).c_str(), "rb");
    if (file == nullptr)
        return;
    std::string text(MaxFileSize, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file));
    std::fclose(file);
    Parse(text, now);
}

bool UsageRecord::Save(const nimbit::file_path& folder) const {
    if (folder.empty())
        return false;
    nimbit::make_dir(folder);
    const std::string text = Format();
    return nimbit::write_file_atomic(folder.append(UsageFileName), text.data(), text.size());
}

bool UsageRecord::Remove(const nimbit::file_path& folder) {
    return !folder.empty() && nimbit::remove_file(folder.append(UsageFileName));
}
