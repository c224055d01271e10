#pragma once

#include "nimbit/filesystem/file_path.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// The capture store: screenshots are plain PNG or JPG files in one folder, the capture folder. The
// folder listing is the store; a file's name carries project, composition and moment of capture,
// and its modification time orders the list. The host's frame capture and the popup's clipboard
// capture write here; the gallery lists, exports and deletes.

namespace nimbit::ui {
class bitmap;
class window;
enum class image_format : int;
} // namespace nimbit::ui

// One capture as the gallery lists it.
struct ListedCapture {
    nimbit::file_path path;
    int64_t time = 0; // the file's modification time, seconds since the epoch
};

// Which save dialog exports one capture: a type of its own, or both types with the format taken
// from the chosen name's extension.
enum class CaptureExport { Either = 0, Png = 1, Jpg = 2 };

namespace CaptureStore {

// "<project>_<composition>_<time>": a name part and its "_" are left out when the name is empty.
// Names are used as the host reports them, nothing escaped.
std::string CaptureName(const std::string& project, const std::string& composition, const std::string& time);
// The folder joined with the capture name and the extension "png".
nimbit::file_path CapturePath(const std::string& folder, const std::string& project,
                              const std::string& composition, const std::string& time);

// Where a capture meant for `wanted` goes without replacing an earlier one: wanted itself when no file
// is there, else the first free "<name> 2.png", "<name> 3.png", ... (two captures in one second share
// a name).
nimbit::file_path FreeCapturePath(const nimbit::file_path& wanted);

// Saves image as a PNG capture named for the current local time (never over an earlier capture), creating the
// folder and its parents when missing; the file appears whole or not at all. Returns the path written, empty
// when the save failed (which the user is not told about).
nimbit::file_path SaveCapture(const nimbit::ui::bitmap& image, const std::string& folder,
                              const std::string& project, const std::string& composition);

// The captures in folder (not its sub-folders): files whose extension is "png" or "jpg" in any
// letter case, newest first. A missing or unreadable folder lists empty.
std::vector<ListedCapture> ListCaptures(const std::string& folder);

// The delete question: "... this image?" for one, "... these N images?" for more.
std::string DeleteQuestion(size_t count);
// Asks: title, question; true when the user confirmed. The gallery asks in a message popup.
using DeleteConfirmation = std::function<bool(const std::string& title, const std::string& question)>;
// Asks the delete question under the title "Delete?"; on confirmation removes each file. Returns the
// paths removed (none when the user declined).
std::vector<nimbit::file_path> DeleteCaptures(const std::vector<nimbit::file_path>& captures,
                                              const DeleteConfirmation& confirm);

// Exports one capture through the save dialog of kind, proposing its name with the new extension.
// Returns whether a file was written; a cancelled dialog writes nothing.
bool ExportCapture(const nimbit::file_path& capture, CaptureExport kind, const nimbit::ui::window* parent);
// Exports several captures into a folder the user selects, each under its own stem with the
// extension of kind (Either gives PNG), one image per item on the shared thread pool. Blocks until
// all are written and returns how many were.
size_t ExportCaptures(const std::vector<nimbit::file_path>& captures, CaptureExport kind,
                      const nimbit::ui::window* parent);
// Writes each capture into folder as above; the part of ExportCaptures after its dialog.
size_t ExportCapturesTo(const std::vector<nimbit::file_path>& captures, CaptureExport kind,
                        const nimbit::file_path& folder);

// Shows the capture selected in the platform's file viewer.
bool RevealCapture(const nimbit::file_path& capture);

} // namespace CaptureStore
