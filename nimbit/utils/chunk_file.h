#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace nimbit {

class file_path;
class memory_map;

enum class chunk_file_access : uint32_t { read = 0, write = 1, measure = 2 };

// The position of one chunk, and the cursor of the file. The member names are the ones the
// assertion messages print, so a report from the field can be matched to the code.
struct chunk_file_state {
    const unsigned char* chunkData = nullptr; // first data byte of the current chunk
    uint32_t chunkSize = 0;                   // its data size
    uint32_t chunkId = 0;                     // its identifier
    uint64_t chunkOffset = 0;                 // where the next chunk header begins
};

// A small tagged binary container: an 8-byte magic, then chunks of (identifier, size, bytes), all
// little-endian, with no count, end marker or padding. One object serves one pass: reading a file or
// buffer, writing one, or measuring what a write would produce. chunk<T>(id, value) writes value in
// the writing modes and reads into it in read mode, so a record lists its fields once.
//
// The reader never trusts the sizes it finds: a chunk whose header or data would run past the end of
// the bytes ends the file there, as if it had been cut off before that chunk.
class chunk_file {
public:
    chunk_file(const file_path& path, chunk_file_access access);
    chunk_file(unsigned char* buffer, unsigned long size, chunk_file_access access);
    chunk_file(const unsigned char* buffer, unsigned long size);
    ~chunk_file();
    chunk_file(const chunk_file&) = delete;
    chunk_file& operator=(const chunk_file&) = delete;

    bool is_valid();
    chunk_file_access get_file_access() const { return access; }
    // The file's length; after a measure pass, the length a write would produce.
    uint64_t file_size() const { return fileSize; }

    // Steps to the next chunk and returns its identifier; 0 at the end, on an invalid file, and in
    // the writing modes.
    uint32_t next_chunk();
    // The current chunk. Using them on an invalid file is a programming error.
    uint32_t chunk_id() const;
    const unsigned char* chunk_data() const;
    uint32_t chunk_size() const;

    // Writing modes: appends value as chunk id and returns true. Read mode: reads the earliest unread
    // occurrence of id into value and returns true; false (value untouched) when there is none left.
    // Implemented for int&, bool&, long long&, std::string& and std::string.
    template <typename T> bool chunk(unsigned id, T&& value);

    void write_chunk(unsigned chunkId, const unsigned char* data, unsigned dataSize);
    // Implemented for int, bool, long long and std::string, in any reference form.
    template <typename T> void write_chunk(unsigned id, T&& value);

private:
    void check_header();
    void map_chunk_file();

    std::string path;
    chunk_file_access access;
    bool valid = false;
    bool header_checked = false;
    unsigned char* data = nullptr;
    uint64_t fileSize = 0;
    chunk_file_state currentState;
    std::unordered_map<uint32_t, std::vector<chunk_file_state>> chunkIndex;
    std::unique_ptr<memory_map> mapping;
};

} // namespace nimbit
