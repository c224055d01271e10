#pragma once

#include "nimbit/filesystem/file_path.h"

#include <optional>
#include <string>
#include <string_view>

namespace nimbit {

// The platform's well-known folders. Each returns the empty path when the platform has none.
//
// On Linux the nearest per-user folders stand in: $XDG_CONFIG_HOME (or ~/.config) for application
// data, /etc/xdg for machine-wide data and $XDG_DOCUMENTS_DIR (or ~/Documents) for documents. The
// environment variables QUILLO_USER_DATA_DIR, QUILLO_COMMON_DATA_DIR, QUILLO_DOCS_DIR and
// QUILLO_SHARED_DOCS_DIR replace them outright, so tests and packaged installs never touch the
// real home.

// On Windows the known folders stand in: Roaming AppData for application data, ProgramData for
// machine-wide data, Documents and Public Documents; the same variables replace them.

// The user's application-support folder.
file_path get_user_data_path();
// The machine-wide application-support folder.
file_path get_common_data_path();
// The user's documents folder.
file_path get_docs_data_path();

// Where a product keeps its documents.
//   mode 0: the "AssetsPath" entry of the product's settings under the machine-wide data folder
//           (common data + "/Tarvelo/" + product) when longer than one character; else the value of
//           the environment variable named by variable; else as mode 1.
//   mode 1: the user's documents folder.
//   mode 2: the documents folder shared by all users.
file_path get_docs_data_path(std::string_view product, std::string_view variable, int mode);
// mode 0: the environment variable's value when set, else the machine-wide data folder;
// mode 1: the user's data folder; mode 2: the machine-wide data folder.
file_path get_common_data_path(std::string_view variable, int mode);

// The per-platform pieces under the modes above (Linux and Windows; the Mac file keeps its own).
namespace detail {
// An environment variable's value as UTF-8; nothing when it is unset.
std::optional<std::string> environment(std::string_view name);
// The documents folder shared by all users (mode 2), before QUILLO_SHARED_DOCS_DIR is looked at.
file_path shared_docs_path();
} // namespace detail

} // namespace nimbit
