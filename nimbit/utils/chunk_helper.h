#pragma once

#include "nimbit/utils/assert.h"
#include "nimbit/utils/chunk_file.h"

#include <cstring>
#include <string>
#include <type_traits>

namespace nimbit {

// Copies the current chunk of a file into a value. Fixed-size values are stored as their bytes in
// little-endian order; a chunk of another size is a programming error here. Keyed reads through
// chunk_file::chunk check the size first and decline instead, because settings files come from
// disk and from other machines. Every accessor of chunk_file first requires a valid file.
template <typename T> struct chunk_helper {
    static_assert(std::is_trivially_copyable_v<T>, "chunk values are plain numbers or strings");

    static void read(const chunk_file& chunkFile, T& value) {
        NIMBIT_ASSERT(sizeof(T) == chunkFile.chunk_size());
        std::memcpy(&value, chunkFile.chunk_data(), sizeof(T));
    }
};

template <> struct chunk_helper<bool> {
    static void read(const chunk_file& chunkFile, bool& value) {
        NIMBIT_ASSERT(sizeof(bool) == chunkFile.chunk_size());
        value = chunkFile.chunk_data()[0] != 0;
    }
};

template <> struct chunk_helper<std::string> {
    static void read(const chunk_file& chunkFile, std::string& value) {
        const uint32_t size = chunkFile.chunk_size();
        value.assign(reinterpret_cast<const char*>(chunkFile.chunk_data()), size);
    }
};

} // namespace nimbit
