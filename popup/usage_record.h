#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace nimbit {
class file_path;
}
struct EffectData;

// How often and how lately the user applied each entry, kept in "effects_usage.txt" beside the
// search data files, one entry a line: "<times> <last use, seconds> <e|p> <display name>" (e for an
// effect, p for a preset; the two kinds may share a name). Lines that do not read so are ignored.
// The record stays small: past MaxEntries, the entries with the lowest score are dropped.
class UsageRecord {
public:
    static constexpr size_t MaxEntries = 500;
    // Weight of a use, halved for every this many seconds since it was last used.
    static constexpr double HalfLife = 14 * 24 * 3600.0;

    void Record(const EffectData& entry, int64_t now);
    // Zero for an entry never used; otherwise grows with the uses and fades with their age.
    double Score(const EffectData& entry, int64_t now) const;
    // One score per catalogue position, for the search to rank by.
    std::vector<float> Scores(const std::vector<EffectData>& catalogue, int64_t now) const;

    void Parse(std::string_view text, int64_t now);
    std::string Format() const; // most used first
    size_t Size() const { return uses.size(); }
    void Clear() { uses.clear(); }

    // Missing or unreadable files read as an empty record.
    void Load(const nimbit::file_path& folder, int64_t now);
    bool Save(const nimbit::file_path& folder) const; // atomically
    static bool Remove(const nimbit::file_path& folder);

private:
    struct Use {
        uint32_t times = 0;
        int64_t last = 0;
        std::string name; // as displayed
    };
    static double Weigh(const Use& use, int64_t now);
    void Trim(int64_t now);

    // Keyed by kind and lower-cased name, as the catalogue's search names compare.
    std::unordered_map<std::string, Use> uses;
};

inline constexpr std::string_view UsageFileName = "effects_usage.txt";
