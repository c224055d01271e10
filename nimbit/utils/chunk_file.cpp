#include "nimbit/utils/chunk_file.h"

#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/assert.h"
#include "nimbit/utils/chunk_helper.h"
#include "nimbit/utils/memory_map.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace nimbit {

namespace {

constexpr unsigned char current_magic[8] = {0x4E, 0x42, 0x43, 0x48, 0x46, 0x00, 0x00, 0x01};
// Files from early builds spelled the magic with F and H swapped; they are still read, never written.
constexpr unsigned char legacy_magic[8] = {0x4E, 0x42, 0x43, 0x46, 0x48, 0x00, 0x00, 0x01};
constexpr uint64_t header_size = 8;
constexpr uint64_t chunk_header_size = sizeof(uint32_t) * 2;

uint32_t load_u32(const unsigned char* p) {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}

void store_u32(unsigned char* p, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<unsigned char>(v >> (8 * i));
}

} // namespace

chunk_file::chunk_file(const file_path& file, chunk_file_access access)
    : path(file.to_string()), access(access) {
    if (access == chunk_file_access::read) {
        mapping = std::make_unique<memory_map>(file, memory_map_access::read, 0, false, false);
    } else if (access == chunk_file_access::write) {
        // Created or cut back to its header. The header's block is reserved before it is written
        // through the mapping: on a full disk the file is then invalid rather than a fault.
        mapping = std::make_unique<memory_map>(file, memory_map_access::read_write, header_size, true, true);
        if (mapping->reserve(0, header_size))
            mapping->remap(0, header_size);
        else
            mapping->end_map();
    }
    if (mapping && mapping->data()) {
        data = mapping->data();
        fileSize = mapping->size();
    }
    // A new file carries its magic at once, so a writer that stops early still leaves a valid file.
    if (access == chunk_file_access::write)
        check_header();
}

chunk_file::chunk_file(unsigned char* buffer, unsigned long size, chunk_file_access access)
    : access(access), data(buffer), fileSize(buffer ? size : 0) {}

chunk_file::chunk_file(const unsigned char* buffer, unsigned long size)
    // Read mode never writes through data.
    : chunk_file(const_cast<unsigned char*>(buffer), size, chunk_file_access::read) {}

chunk_file::~chunk_file() = default;

void chunk_file::check_header() {
    valid = false;
    header_checked = true;
    if (access == chunk_file_access::measure) {
        fileSize = header_size;
        data = nullptr;
    } else {
        if (!data || fileSize < header_size)
            return;
        if (access == chunk_file_access::read) {
            if (std::memcmp(data, current_magic, 8) != 0 && std::memcmp(data, legacy_magic, 8) != 0)
                return;
        } else {
            std::memcpy(data, current_magic, 8);
        }
    }
    currentState = chunk_file_state{nullptr, 0, 0, header_size};
    valid = true;
}

bool chunk_file::is_valid() {
    if (!header_checked)
        check_header();
    return valid;
}

uint32_t chunk_file::next_chunk() {
    if (!header_checked)
        check_header();
    const uint64_t offset = currentState.chunkOffset;
    if (valid && access == chunk_file_access::read && data && offset < fileSize &&
        fileSize - offset >= chunk_header_size) {
        const uint32_t id = load_u32(data + offset);
        const uint32_t size = load_u32(data + offset + 4);
        if (fileSize - offset - chunk_header_size >= size) {
            currentState = chunk_file_state{data + offset + chunk_header_size, size, id,
                                            offset + chunk_header_size + size};
            return id;
        }
    }
    // The end, or a chunk that would run past the end: the file ends here.
    currentState.chunkData = nullptr;
    currentState.chunkSize = 0;
    currentState.chunkId = 0;
    return 0;
}

uint32_t chunk_file::chunk_id() const {
    NIMBIT_ASSERT(valid);
    return currentState.chunkId;
}

const unsigned char* chunk_file::chunk_data() const {
    NIMBIT_ASSERT(valid);
    return currentState.chunkData;
}

uint32_t chunk_file::chunk_size() const {
    NIMBIT_ASSERT(valid);
    return currentState.chunkSize;
}

void chunk_file::map_chunk_file() {
    if (!chunkIndex.empty())
        return;
    while (next_chunk() != 0)
        chunkIndex[currentState.chunkId].push_back(currentState);
    // Each list runs backwards through the file so that taking from the back yields the earliest
    // occurrence first; appending and turning round once keeps a long list linear to build.
    for (auto& [id, states] : chunkIndex)
        std::reverse(states.begin(), states.end());
}

template <typename T> bool chunk_file::chunk(unsigned id, T&& value) {
    using V = std::remove_cvref_t<T>;
    if (access != chunk_file_access::read) {
        write_chunk(id, std::forward<T>(value));
        return true;
    }
    if (!is_valid())
        return false;
    map_chunk_file();
    const auto found = chunkIndex.find(id);
    if (found == chunkIndex.end() || found->second.empty())
        return false;
    currentState = found->second.back();
    found->second.pop_back();
    bool read = true;
    if constexpr (std::is_same_v<V, std::string>) {
        chunk_helper<std::string>::read(*this, value);
    } else if (currentState.chunkSize == sizeof(V)) {
        chunk_helper<V>::read(*this, value);
    } else {
        // A fixed-size value in a chunk of another size: the file is damaged or from another writer.
        // The occurrence is used up and the value keeps what it held, so a loader keeps its default.
        read = false;
    }
    next_chunk();
    return read;
}

void chunk_file::write_chunk(unsigned chunkId, const unsigned char* bytes, unsigned dataSize) {
    NIMBIT_ASSERT(chunkId > 0);
    if (!header_checked)
        check_header();
    if (!valid || access == chunk_file_access::read)
        return;
    if (access == chunk_file_access::measure) {
        fileSize += chunk_header_size + dataSize;
        return;
    }
    if (mapping) {
        // The file grows by exactly this chunk. Its blocks are reserved before anything is written
        // through the new mapping; when that fails the file is cut back and writing stops, leaving a
        // well-formed shorter file.
        const uint64_t old_size = fileSize;
        const uint64_t new_size = old_size + chunk_header_size + dataSize;
        mapping.reset();
        data = nullptr;
        auto grown = std::make_unique<memory_map>(file_path(path), memory_map_access::read_write, new_size,
                                                  true, false);
        if (grown->is_open() && grown->reserve(old_size, new_size - old_size))
            grown->remap(0, new_size);
        if (!grown->data()) {
            if (grown->is_open())
                grown->resize(old_size);
            valid = false;
            return;
        }
        mapping = std::move(grown);
        data = mapping->data();
        fileSize = mapping->size();
    }
    if (data) {
        NIMBIT_ASSERT(fileSize >= currentState.chunkOffset + sizeof(uint32_t) * 2 + dataSize);
        unsigned char* at = data + currentState.chunkOffset;
        store_u32(at, chunkId);
        store_u32(at + 4, dataSize);
        if (dataSize)
            std::memcpy(at + chunk_header_size, bytes, dataSize);
        currentState.chunkOffset += chunk_header_size + dataSize;
    }
}

template <typename T> void chunk_file::write_chunk(unsigned id, T&& value) {
    NIMBIT_ASSERT(get_file_access() != chunk_file_access::read);
    using V = std::remove_cvref_t<T>;
    if constexpr (std::is_same_v<V, std::string>) {
        NIMBIT_ASSERT(value.size() <= UINT32_MAX);
        write_chunk(id, reinterpret_cast<const unsigned char*>(value.data()),
                    static_cast<unsigned>(value.size()));
    } else if constexpr (std::is_same_v<V, bool>) {
        const unsigned char byte = value ? 1 : 0;
        write_chunk(id, &byte, 1);
    } else {
        static_assert(std::is_integral_v<V>, "chunk values are int, bool, long long or std::string");
        unsigned char bytes[sizeof(V)];
        const auto bits = static_cast<std::make_unsigned_t<V>>(value);
        for (unsigned i = 0; i < sizeof(V); ++i)
            bytes[i] = static_cast<unsigned char>(bits >> (8 * i));
        write_chunk(id, bytes, sizeof(V));
    }
}

// The value types a chunk can hold, in the reference forms callers use.
template bool chunk_file::chunk<int&>(unsigned, int&);
template bool chunk_file::chunk<bool&>(unsigned, bool&);
template bool chunk_file::chunk<long long&>(unsigned, long long&);
template bool chunk_file::chunk<std::string&>(unsigned, std::string&);
template bool chunk_file::chunk<std::string>(unsigned, std::string&&);

#define NIMBIT_CHUNK_WRITERS(type)                                                                           \
    template void chunk_file::write_chunk<type&>(unsigned, type&);                                           \
    template void chunk_file::write_chunk<const type&>(unsigned, const type&);                               \
    template void chunk_file::write_chunk<type>(unsigned, type&&);
NIMBIT_CHUNK_WRITERS(int)
NIMBIT_CHUNK_WRITERS(bool)
NIMBIT_CHUNK_WRITERS(long long)
NIMBIT_CHUNK_WRITERS(std::string)
#undef NIMBIT_CHUNK_WRITERS

} // namespace nimbit
