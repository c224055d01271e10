#include "nimbit/utils/memory_map.h"

#include "nimbit/filesystem/file_path.h"

namespace nimbit {

uint64_t memory_map::page_size() {
    return map_granularity();
}

memory_map::memory_map(const file_path& path, memory_map_access access, uint64_t size, bool deferred,
                       bool truncate)
    : access(access) {
    // Only regular files are used; a pipe or device planted at the path is refused without blocking.
    file = open_regular_file(path, writable(), 0777);
    file_facts facts;
    if (!file || !describe(file, facts)) {
        end_map();
        return;
    }
    was_opened = true;
    if (writable())
        set_permissions(file, 0777); // the umask must not narrow what the creator asked for
    const uint64_t present = facts.size;
    length = (size != 0 || (writable() && truncate)) ? size : present;
    if (writable() && (present < length || truncate)) {
        if (!set_file_length(file, length)) {
            end_map();
            return;
        }
    }
    // A read-only file cannot be grown, and a view past its end would fault: keep to what is there.
    if (!writable() && length > present)
        length = present;
    if (length == 0) {
        end_map();
        return;
    }
    if (!deferred)
        remap(0, length);
}

memory_map::~memory_map() {
    end_map();
}

void memory_map::drop_view() {
    if (view)
        unmap_view(view, size_of_view);
    view = nullptr;
    offset_of_view = 0;
    size_of_view = 0;
}

uint64_t memory_map::remap(uint64_t offset, uint64_t size) {
    drop_view();
    const uint64_t page = page_size();
    const uint64_t start = offset - offset % page;
    if (!file || size == 0) {
        end_map();
        return start;
    }
    // The file may have changed length under us (another process, a damaged disk); look again so
    // that the view never reaches past its end.
    current_size();
    if (!file || offset > length || size > length - offset) {
        end_map();
        return start;
    }
    const uint64_t span = size + (offset - start);
    view = map_view(file, start, span, writable());
    if (!view) {
        end_map();
        return start;
    }
    offset_of_view = start;
    size_of_view = span;
    return start;
}

uint64_t memory_map::current_size() {
    file_facts facts;
    if (describe(file, facts))
        length = facts.size;
    return length;
}

bool memory_map::same_file(const file_path& path) const {
    const file_descriptor named = open_for_reading(path);
    file_facts open_file, named_file;
    return describe(file, open_file) && describe(named, named_file) &&
           open_file.device == named_file.device && open_file.inode == named_file.inode;
}

void memory_map::end_map() {
    drop_view();
    file.close();
    length = 0;
}

bool memory_map::resize(uint64_t new_length) {
    if (!file || !writable())
        return false;
    drop_view();
    if (!set_file_length(file, new_length))
        return false;
    length = new_length;
    return true;
}

bool memory_map::write(uint64_t offset, const void* bytes, uint64_t size) {
    return file && writable() && size <= SIZE_MAX && write_at(file, offset, bytes, static_cast<size_t>(size));
}

bool memory_map::reserve(uint64_t offset, uint64_t size) {
    if (!file || !writable() || offset > UINT64_MAX - size)
        return false;
    if (size == 0)
        return true;
    if (offset + size > length)
        return false;
    return reserve_space(file, offset, size);
}

} // namespace nimbit
