#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nimbit {

class file_path;

enum class cache_status : uint32_t {
    invalid = 0,     // the files could not be read or made valid
    unavailable = 1, // a file could not be opened
    closed = 2,      // no files named
    loaded = 3,      // files named, not opened yet
    ready = 5,
};

// A value found in the cache: a view straight into the mapped data file, valid until the next call
// on the same cache object. Both fields are zero on a miss.
struct cache_value {
    const unsigned char* data = nullptr;
    uint64_t size = 0;
    explicit operator bool() const { return data != nullptr; }
};

// A persistent key-to-bytes store made of two files: the data file holds the values back to back,
// "<path>.header" indexes them. Values are placed first-fit into the gaps of the data file; when the
// data would pass the size limit the least recently used values are evicted until the new one fits.
//
// Nothing here reports an error: a missing or read-only folder, a damaged header or a full disk show
// as misses and ignored stores. A damaged header is rebuilt empty (or, read-only, the cache stays
// off).
//
// Both files are mapped whole, once, when first used; the data mapping is made again only when the
// file has grown past it, and the header's when its length changes.
//
// Several objects, in one process or in several, may use the same files at once. Every operation
// locks the object's own mutex and then takes flock on a third file, "<path>.lock" (shared when
// read-only, else exclusive). flock, not fcntl locks: those belong to the process, so two objects in
// one process would not exclude each other, and closing any descriptor of the file drops them. The
// lock file is never deleted, so every process locks the same file. Its first 8 bytes count changes.
// While the lock is held:
// - the header and the data file are as the previous holder left them, and whoever changes them
//   (stores, removes, moves a value; clears or rebuilds the files) adds one to the count before
//   letting go. The time of last use a read writes is not counted: the order of use between
//   processes is only approximate;
// - an object whose count differs from the one it last saw, or whose header file changed length,
//   reads the header again; a file deleted and made again since is opened anew (its inode differs);
// - no holder shortens a file in place: clearing and rebuilding delete and recreate the files, so an
//   older mapping stays backed by the old file. The data file's length is looked up on every
//   operation all the same, and a value past its end (a file cut by something else) is a miss;
// - a writable object that cannot open the lock file stays unavailable; a read-only one without it
//   reads unlocked, guarded by those length checks alone.
// The view get_data gives holds the key's bytes when it is returned, but once the lock is let go
// another process may replace that value and reuse its bytes: where other processes share the
// files, copy with read_data.
class mapped_cache {
public:
    mapped_cache();
    ~mapped_cache();
    mapped_cache(const mapped_cache&) = delete;
    mapped_cache& operator=(const mapped_cache&) = delete;

    // Names the files (only when closed); nothing is opened until the first access.
    void load(const file_path& path, bool read_only);

    cache_value get_data(std::string_view name);
    // A copy of the value, made under the locks: for an object shared by several threads, or files
    // shared with other processes, where the view get_data gives may be replaced by another's call.
    // False, and out untouched, on a miss.
    bool read_data(std::string_view name, std::vector<unsigned char>& out);
    // Stores or replaces; false when the value was not stored (empty, larger than the limit,
    // read-only, or the files could not take it).
    bool set_data(std::string_view name, const unsigned char* bytes, uint64_t length);
    bool remove_data(std::string_view name);
    void remove_oldest_entry();
    // Moves values down toward offset 0, closing gaps; stops after count + 1 moves.
    void defrag(uint32_t count);

    // Unless closed: drops everything and deletes both files; the cache is then closed (close true)
    // or ready to be opened afresh on the next access.
    void clear(bool close);
    void close();

    cache_status get_status() const;
    // Takes effect in memory only; an existing header's stored limit wins when it is next opened.
    void set_max_size(uint64_t bytes);
    uint64_t get_max_size() const;
    // The number of values held.
    uint64_t entry_count() const;
    // The key map and both ordered lists hold the same number of entries.
    bool check_consistency() const;

    // The stored key of a name: its last 128 characters and the decimal of a 64-bit hash of it all.
    static std::string generate_key(std::string_view name);

private:
    struct impl;
    std::unique_ptr<impl> self;
};

} // namespace nimbit
