#include "nimbit/utils/mapped_cache.h"

#include "nimbit/filesystem/file_descriptor.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/utils/memory_map.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <list>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace nimbit {

namespace {

static_assert(std::endian::native == std::endian::little, "the cache files are little-endian");

constexpr unsigned char header_magic[8] = {'N', 'B', 'M', 'P', 'C', 0, 0, 0};
constexpr uint64_t preamble_size = 24;
constexpr uint64_t slot_size = 200;
constexpr uint64_t initial_slots = 50;
constexpr uint64_t initial_header_size = preamble_size + slot_size * initial_slots; // 10024
constexpr uint64_t header_growth = slot_size * 10;                                  // 2000
constexpr uint64_t initial_data_size = 5'242'880;
constexpr uint64_t data_growth = 10'485'760;
constexpr uint64_t default_max_size = 524'288'000;
constexpr size_t key_tail = 128;
constexpr size_t key_field = 152;

// One slot of the header file, exactly as stored.
struct cache_header_entry {
    char key[key_field];
    uint64_t offset;
    uint64_t size;
    double last_used; // microseconds since the Unix epoch
    double created;
    uint64_t index;
    uint32_t in_use;
    uint32_t reserved;
};
static_assert(sizeof(cache_header_entry) == slot_size);
static_assert(offsetof(cache_header_entry, offset) == 152 && offsetof(cache_header_entry, size) == 160 &&
              offsetof(cache_header_entry, last_used) == 168 &&
              offsetof(cache_header_entry, created) == 176 && offsetof(cache_header_entry, index) == 184 &&
              offsetof(cache_header_entry, in_use) == 192);

// Microseconds since the Unix epoch, strictly increasing within the process: the order of use must
// survive a reload even when two uses fall into the same microsecond.
double now_us() {
    using namespace std::chrono;
    static std::atomic<int64_t> last{0};
    const int64_t now = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    int64_t previous = last.load(std::memory_order_relaxed);
    int64_t next;
    do
        next = now > previous ? now : previous + 1;
    while (!last.compare_exchange_weak(previous, next, std::memory_order_relaxed));
    return static_cast<double>(next);
}

uint64_t load_u64(const unsigned char* p) {
    uint64_t v;
    std::memcpy(&v, p, 8);
    return v;
}

void store_u64(unsigned char* p, uint64_t v) {
    std::memcpy(p, &v, 8);
}

// FNV-1a: keys are stored on disk, so the hash must not change between builds, compilers or
// standard libraries the way std::hash may; a key made by another hash would simply miss.
uint64_t stable_hash(std::string_view text) {
    uint64_t h = 14695981039346656037ull;
    for (const char c : text) {
        h ^= static_cast<unsigned char>(c);
        h *= 1099511628211ull;
    }
    return h;
}

} // namespace

struct mapped_cache::impl {
    struct node;
    using node_list = std::list<node*>;
    struct node {
        cache_header_entry slot;
        node_list::iterator by_offset;
        node_list::iterator by_use;
    };

    mutable std::mutex mutex;
    bool read_only = false;
    cache_status status = cache_status::closed;
    file_path data_path;
    file_path header_path;
    file_path lock_path;
    std::unique_ptr<memory_map> data_map;
    std::unique_ptr<memory_map> header_map;
    std::unordered_map<std::string, node> keys;
    node_list offsets; // ascending data offset, no overlaps
    node_list usage;   // most recently used first
    uint64_t max_size = default_max_size;
    uint64_t slot_count = 0; // as stored in the header
    // The in-use flags of the header's slots, mirrored so that finding a free slot does not walk
    // the whole header file.
    std::vector<bool> slot_used;

    file_descriptor lock;
    bool locked = false;
    // The change counter as it stood when the key map was last made to agree with the header.
    uint64_t seen_changes = 0;
    // Set by anything that changes the files; the counter is bumped when the lock is let go.
    bool changed = false;
    // The data file's length as looked up under the present lock; nothing past it is touched.
    uint64_t data_size = 0;

    impl() { keys.max_load_factor(1.0f); }
    ~impl() { close_lock(); }

    // One operation on the files: the object's mutex, then the lock shared with other processes.
    struct operation {
        std::lock_guard<std::mutex> hold;
        impl& cache;
        explicit operation(impl& c) : hold(c.mutex), cache(c) { c.acquire(); }
        ~operation() { cache.release(); }
        operation(const operation&) = delete;
        operation& operator=(const operation&) = delete;
    };

    void drop() {
        keys.clear();
        offsets.clear();
        usage.clear();
        data_map.reset();
        header_map.reset();
        slot_count = 0;
        slot_used.clear();
        data_size = 0;
    }

    // The lock file is opened with the cache and kept until it is closed. A read-only cache does
    // not make one; without it, it reads unlocked and relies on the length checks alone.
    void open_lock() {
        lock = open_regular_file(lock_path, !read_only, 0666);
        if (lock && !read_only)
            set_permissions(lock, 0666); // other users' hosts must be able to lock it too
    }

    void close_lock() { lock.close(); }

    void acquire() {
        if (!lock && (status == cache_status::loaded || status == cache_status::ready))
            open_lock();
        if (!lock)
            return;
        locked = lock_file(lock, read_only);
    }

    void release() {
        if (locked && changed) {
            seen_changes = read_changes() + 1;
            // A counter that cannot be written leaves others with the sizes checks.
            write_at(lock, 0, &seen_changes, 8);
        }
        changed = false;
        if (locked)
            unlock_file(lock);
        locked = false;
        if (status == cache_status::closed)
            close_lock();
    }

    uint64_t read_changes() const {
        uint64_t count = 0;
        if (lock && !read_at(lock, 0, &count, 8))
            count = 0;
        return count;
    }

    // Slots the header mapping has room for.
    uint64_t slot_capacity() const {
        if (!header_map || !header_map->data() || header_map->view_size() < preamble_size)
            return 0;
        return (header_map->view_size() - preamble_size) / slot_size;
    }

    // The header bytes of slot i, or null when the mapping does not hold it.
    unsigned char* slot_at(uint64_t i) const {
        return i < slot_capacity() ? header_map->data() + preamble_size + slot_size * i : nullptr;
    }

    // A pointer to [offset, offset + length) of the data file, mapping the whole file again when it
    // has grown past the present mapping. Null when the range lies past the file's end: touching a
    // mapped page there would fault.
    unsigned char* data_at(uint64_t offset, uint64_t length) {
        if (!data_map || !data_map->is_open() || offset > data_size || length > data_size - offset)
            return nullptr;
        if (!data_map->data() || offset + length > data_map->view_size())
            data_map->remap(0, data_size);
        return data_map->data() ? data_map->data() + offset : nullptr;
    }

    // Under the lock: makes the key map agree with the files, opening them first when needed.
    bool check_cache() {
        if (!locked && !read_only) {
            // A cache that cannot keep other processes out must not write.
            if (!lock && (status == cache_status::loaded || status == cache_status::ready)) {
                drop();
                status = cache_status::unavailable;
            }
            return false;
        }
        if (status == cache_status::ready)
            return refresh();
        if (status != cache_status::loaded)
            return false;
        seen_changes = read_changes();
        return open_files();
    }

    // Another process may have changed the files since this object last looked: its change count
    // tells, and a header of another length (or a closed data file) means the same.
    bool refresh() {
        const uint64_t changes = read_changes();
        const uint64_t header_size = header_map->current_size();
        data_size = data_map->is_open() ? data_map->current_size() : 0;
        if (changes == seen_changes && header_size == header_map->view_size() && data_map->is_open())
            return true;
        seen_changes = changes;
        keys.clear();
        offsets.clear();
        usage.clear();
        // Mappings of files still in place at the same length are kept, so that a change elsewhere
        // costs a new reading of the header, not its pages or the data file's.
        if (header_size != header_map->view_size() || !header_map->same_file(header_path))
            header_map.reset();
        if (!data_map->is_open() || !data_map->same_file(data_path))
            data_map.reset();
        status = cache_status::loaded;
        return open_files();
    }

    bool open_files() {
        const auto access = read_only ? memory_map_access::read : memory_map_access::read_write;
        if (!header_map)
            header_map = std::make_unique<memory_map>(header_path, access, 0, false, false);
        if (!data_map)
            data_map = std::make_unique<memory_map>(data_path, access, 0, false, false);
        data_size = data_map->size();
        if (header_map->data() && data_map->is_open()) {
            if (open_header())
                return true;
            return !read_only && init_cache();
        }
        if (!header_map->opened() || !data_map->opened()) {
            drop();
            status = cache_status::unavailable;
            return false;
        }
        if (read_only) {
            drop();
            status = cache_status::invalid;
            return false;
        }
        return init_cache();
    }

    bool fail_invalid() {
        drop();
        status = cache_status::invalid;
        return false;
    }

    // Reads the header into the key map and both lists. Anything that does not describe a value
    // inside the data file marks the whole header as damaged.
    bool open_header() {
        keys.clear();
        offsets.clear();
        usage.clear();
        const unsigned char* h = header_map ? header_map->data() : nullptr;
        const uint64_t size = h ? header_map->view_size() : 0;
        if (size < preamble_size || std::memcmp(h, header_magic, 8) != 0)
            return fail_invalid();
        const uint64_t stored_max = load_u64(h + 8);
        const uint64_t slots = load_u64(h + 16);
        if (slots > (size - preamble_size) / slot_size)
            return fail_invalid();
        std::vector<node*> found;
        std::vector<bool> used(slots, false);
        for (uint64_t i = 0; i < slots; ++i) {
            unsigned char* raw = header_map->data() + preamble_size + slot_size * i;
            cache_header_entry slot;
            std::memcpy(&slot, raw, slot_size);
            if (slot.in_use == 0)
                continue;
            const size_t key_length = ::strnlen(slot.key, key_field);
            if (key_length == key_field || slot.index != i || slot.size == 0 || slot.offset > data_size ||
                slot.size > data_size - slot.offset)
                return fail_invalid();
            auto [it, inserted] = keys.try_emplace(std::string(slot.key, key_length));
            if (!inserted) {
                // A second slot under one key: the first is kept and the other freed.
                if (!read_only) {
                    std::memset(raw, 0, slot_size);
                    changed = true;
                }
                continue;
            }
            used[i] = true;
            it->second.slot = slot;
            found.push_back(&it->second);
        }

        std::vector<node*> sorted = found;
        std::sort(sorted.begin(), sorted.end(),
                  [](const node* a, const node* b) { return a->slot.offset < b->slot.offset; });
        uint64_t end = 0;
        for (node* n : sorted) {
            if (n->slot.offset < end)
                return fail_invalid(); // overlapping values
            end = n->slot.offset + n->slot.size;
            n->by_offset = offsets.insert(offsets.end(), n);
        }
        // Most recent first; equal times keep slot order. An unreadable time counts as oldest.
        const auto age = [](const node* n) {
            return std::isnan(n->slot.last_used) ? -HUGE_VAL : n->slot.last_used;
        };
        std::stable_sort(found.begin(), found.end(),
                         [&](const node* a, const node* b) { return age(a) > age(b); });
        for (node* n : found)
            n->by_use = usage.insert(usage.end(), n);

        max_size = stored_max;
        slot_count = slots;
        slot_used = std::move(used);
        status = cache_status::ready;
        return true;
    }

    bool init_cache() {
        if (read_only)
            return fail_invalid();
        drop();
        // Deleted and made afresh rather than cut: another process's mapping of the old files
        // stays valid until it sees the change and opens the new ones.
        changed = true;
        delete_file(header_path);
        delete_file(data_path);
        header_map = std::make_unique<memory_map>(header_path, memory_map_access::read_write,
                                                  initial_header_size, true, true);
        if (!header_map->reserve(0, initial_header_size))
            return fail_invalid();
        header_map->remap(0, initial_header_size);
        data_map = std::make_unique<memory_map>(data_path, memory_map_access::read_write, initial_data_size,
                                                false, true);
        data_size = data_map->size();
        if (!header_map->data() || !data_map->is_open())
            return fail_invalid();
        unsigned char* h = header_map->data();
        std::memset(h, 0, initial_header_size);
        std::memcpy(h, header_magic, 8);
        store_u64(h + 8, max_size);
        store_u64(h + 16, initial_slots);
        return open_header();
    }

    void write_slot_field(const node& n, size_t field, const void* value, size_t bytes) {
        if (read_only)
            return;
        if (unsigned char* raw = slot_at(n.slot.index))
            std::memcpy(raw + field, value, bytes);
    }

    void remove(node& n) {
        changed = !read_only;
        if (unsigned char* raw = read_only ? nullptr : slot_at(n.slot.index))
            std::memset(raw, 0, slot_size);
        if (n.slot.index < slot_used.size())
            slot_used[n.slot.index] = false;
        offsets.erase(n.by_offset);
        usage.erase(n.by_use);
        keys.erase(std::string(n.slot.key));
    }

    // First fit: the first gap from offset 0 that holds length bytes, else the end of the last value.
    // Returns the offset and the list position to insert before.
    std::pair<uint64_t, node_list::iterator> find_space(uint64_t length) {
        uint64_t position = 0;
        for (auto it = offsets.begin(); it != offsets.end(); ++it) {
            const cache_header_entry& s = (*it)->slot;
            if (s.offset - position >= length)
                return {position, it};
            position = s.offset + s.size;
        }
        return {position, offsets.end()};
    }

    // Makes room for one more slot, ten at a time; the new slots are zeroed before they are counted.
    bool grow_header() {
        const uint64_t old_size = header_map->view_size();
        const uint64_t new_size = old_size + header_growth;
        changed = true;
        if (!header_map->resize(new_size) || !header_map->reserve(old_size, header_growth)) {
            // The header stays as it was; losing even that mapping turns the cache off.
            header_map->resize(old_size);
            header_map->remap(0, old_size);
            if (!header_map->data())
                fail_invalid();
            return false;
        }
        header_map->remap(0, new_size);
        if (!header_map->data())
            return fail_invalid();
        std::memset(header_map->data() + old_size, 0, header_growth);
        return true;
    }

    bool set(std::string_view name, const unsigned char* bytes, uint64_t length) {
        if (!bytes || length == 0 || name.empty() || read_only || !check_cache())
            return false;
        // Eviction could never make room for it; refuse before anything is lost.
        if (length > max_size)
            return false;
        const std::string key = generate_key(name);
        if (auto old = keys.find(key); old != keys.end())
            remove(old->second);

        const uint64_t index =
            static_cast<uint64_t>(std::find(slot_used.begin(), slot_used.end(), false) - slot_used.begin());

        auto [offset, before] = find_space(length);
        while (offset > max_size - length) {
            if (usage.empty())
                return false;
            remove(*usage.back());
            std::tie(offset, before) = find_space(length);
        }

        if (index >= slot_capacity() && !grow_header())
            return false;

        if (offset + length > data_size) {
            // Grown in whole steps; the mapping follows when a value past its end is read.
            const uint64_t short_by = offset + length - data_size;
            const uint64_t steps = (short_by + data_growth - 1) / data_growth;
            if (steps > (UINT64_MAX - data_size) / data_growth ||
                !data_map->resize(data_size + steps * data_growth))
                return false;
            data_size = data_map->size();
        }
        // The bytes go in through the file before the slot names them: a full disk then refuses
        // the value with an error instead of a fault inside a copy through the mapping.
        if (!data_map->write(offset, bytes, length))
            return false;
        changed = true;

        // Slots past the old count may hold bytes the file had beyond it; they are cleared before
        // the count takes them in.
        const uint64_t capacity = slot_capacity();
        for (uint64_t i = slot_count; i < capacity; ++i)
            std::memset(slot_at(i), 0, slot_size);
        slot_count = capacity;
        slot_used.resize(slot_count, false);
        slot_used[index] = true;
        store_u64(header_map->data() + 16, slot_count);

        cache_header_entry slot{};
        std::memcpy(slot.key, key.data(), key.size());
        slot.offset = offset;
        slot.size = length;
        slot.last_used = slot.created = now_us();
        slot.index = index;
        slot.in_use = 1;
        std::memcpy(slot_at(index), &slot, slot_size);

        node& n = keys[key];
        n.slot = slot;
        n.by_offset = offsets.insert(before, &n);
        n.by_use = usage.insert(usage.begin(), &n);
        return true;
    }

    cache_value get(std::string_view name) {
        if (name.empty() || !check_cache())
            return {};
        const auto found = keys.find(generate_key(name));
        if (found == keys.end())
            return {};
        node& n = found->second;
        const unsigned char* bytes = data_at(n.slot.offset, n.slot.size);
        if (!bytes)
            return {};
        n.slot.last_used = now_us();
        // Not counted as a change: other processes keep their order of use until they next read
        // the header.
        write_slot_field(n, offsetof(cache_header_entry, last_used), &n.slot.last_used, sizeof(double));
        usage.splice(usage.begin(), usage, n.by_use);
        return {bytes, n.slot.size};
    }

    void defrag(uint32_t count) {
        if (read_only || !check_cache())
            return;
        uint64_t position = 0;
        for (node* n : offsets) {
            cache_header_entry& s = n->slot;
            if (s.offset != position) {
                // Values never overlap, so the value only ever moves toward the start.
                unsigned char* span = data_at(position, s.offset + s.size - position);
                if (!span || !data_map->reserve(position, s.size))
                    return;
                std::memmove(span, span + (s.offset - position), s.size);
                s.offset = position;
                changed = true;
                write_slot_field(*n, offsetof(cache_header_entry, offset), &s.offset, sizeof(uint64_t));
                if (count == 0)
                    return;
                --count;
            }
            position += s.size;
        }
    }
};

mapped_cache::mapped_cache() : self(std::make_unique<impl>()) {}

mapped_cache::~mapped_cache() = default;

void mapped_cache::load(const file_path& path, bool read_only) {
    std::lock_guard lock(self->mutex);
    if (self->status != cache_status::closed)
        return;
    self->data_path = path;
    self->header_path = file_path(path.to_string() + ".header");
    self->lock_path = file_path(path.to_string() + ".lock");
    self->read_only = read_only;
    self->status = cache_status::loaded;
}

cache_value mapped_cache::get_data(std::string_view name) {
    impl::operation op(*self);
    return self->get(name);
}

bool mapped_cache::read_data(std::string_view name, std::vector<unsigned char>& out) {
    impl::operation op(*self);
    const cache_value value = self->get(name);
    if (!value)
        return false;
    out.assign(value.data, value.data + value.size);
    return true;
}

bool mapped_cache::set_data(std::string_view name, const unsigned char* bytes, uint64_t length) {
    impl::operation op(*self);
    return self->set(name, bytes, length);
}

bool mapped_cache::remove_data(std::string_view name) {
    impl::operation op(*self);
    if (name.empty() || self->read_only || !self->check_cache())
        return false;
    const auto found = self->keys.find(generate_key(name));
    if (found == self->keys.end())
        return false;
    self->remove(found->second);
    return true;
}

void mapped_cache::remove_oldest_entry() {
    impl::operation op(*self);
    if (self->status == cache_status::ready && !self->read_only && self->check_cache() &&
        !self->usage.empty())
        self->remove(*self->usage.back());
}

void mapped_cache::defrag(uint32_t count) {
    impl::operation op(*self);
    self->defrag(count);
}

void mapped_cache::clear(bool close) {
    impl::operation op(*self);
    if (self->status == cache_status::closed)
        return;
    self->drop();
    self->status = close ? cache_status::closed : cache_status::loaded;
    // A read-only cache leaves the disk as it found it. The lock file stays: a process that holds
    // it open must keep locking the same file as one that opens it afresh.
    if (!self->read_only) {
        delete_file(self->header_path);
        delete_file(self->data_path);
        self->changed = true;
    }
}

void mapped_cache::close() {
    std::lock_guard lock(self->mutex);
    if (self->status == cache_status::closed)
        return;
    self->drop();
    self->close_lock();
    self->status = cache_status::closed;
}

cache_status mapped_cache::get_status() const {
    std::lock_guard lock(self->mutex);
    return self->status;
}

void mapped_cache::set_max_size(uint64_t bytes) {
    std::lock_guard lock(self->mutex);
    self->max_size = bytes;
}

uint64_t mapped_cache::get_max_size() const {
    std::lock_guard lock(self->mutex);
    return self->max_size;
}

uint64_t mapped_cache::entry_count() const {
    std::lock_guard lock(self->mutex);
    return self->keys.size();
}

bool mapped_cache::check_consistency() const {
    std::lock_guard lock(self->mutex);
    return self->keys.size() == self->offsets.size() && self->keys.size() == self->usage.size();
}

std::string mapped_cache::generate_key(std::string_view name) {
    std::string key(name.size() > key_tail ? name.substr(name.size() - key_tail) : name);
    // The header keeps keys as terminated text; a zero byte inside would cut the stored key short.
    std::replace(key.begin(), key.end(), '\0', '?');
    key += std::to_string(stable_hash(name));
    return key;
}

} // namespace nimbit
