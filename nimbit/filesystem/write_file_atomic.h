#pragma once

#include <cstddef>

namespace nimbit {

class file_path;

// Replaces the file at path with size bytes of data, or leaves it untouched. The bytes go to a
// temporary file beside the target, are flushed to the disk and then renamed over the target, so an
// interruption at any point leaves either the old file or the new one, never a mix. A failed write
// removes the temporary file. An existing target keeps its permissions.
bool write_file_atomic(const file_path& path, const void* data, size_t size);

} // namespace nimbit
