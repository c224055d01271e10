#include "gallery/capture_store.h"

#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/folder_iterator.h"
#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/native_file_browser.h"
#include "nimbit/ui/native_file_shell.h"
#include "nimbit/utils/string_utils.h"
#include "nimbit/utils/thread_pool.h"
#include "nimbit/utils/timer.h"

#include <algorithm>
#include <atomic>

using nimbit::file_path;
using nimbit::ui::bitmap;
using nimbit::ui::image_format;
namespace file_browser = nimbit::file_browser;

namespace {

struct ExportType {
    const char* title;
    file_browser::file_filter filter;
    const char* extension;
};
const ExportType PngExport{"Save to PNG", {"PNG files (*.png)", "*.png"}, "png"};
const ExportType JpgExport{"Save to JPG", {"JPG files (*.jpg)", "*.jpg"}, "jpg"};

// A chosen name's extension decides the format where the dialog offered both.
image_format FormatOf(const file_path& path) {
    return nimbit::string_lower(path.extension()) == "jpg" ? image_format::jpg : image_format::png;
}

image_format FormatOf(CaptureExport kind) {
    return kind == CaptureExport::Jpg ? image_format::jpg : image_format::png;
}

bool Convert(const file_path& from, const file_path& to, image_format format) {
    bitmap image;
    return image.load_image(from) && image.save_image(to, format);
}

} // namespace

namespace CaptureStore {

std::string CaptureName(const std::string& project, const std::string& composition, const std::string& time) {
    std::string name;
    if (!project.empty())
        name += project + "_";
    if (!composition.empty())
        name += composition + "_";
    return name + time;
}

file_path CapturePath(const std::string& folder, const std::string& project, const std::string& composition,
                      const std::string& time) {
    return file_path(folder)
        .append(file_path(CaptureName(project, composition, time)))
        .append_extension("png");
}

file_path FreeCapturePath(const file_path& wanted) {
    // Bounded: a thousand captures within one second let the last one replace its namesake.
    for (int n = 1; n < 1000; ++n) {
        const file_path candidate = n == 1
                                        ? wanted
                                        : wanted.stem()
                                              .append(file_path(wanted.leaf(false) + " " + std::to_string(n)))
                                              .append_extension(wanted.extension());
        if (!nimbit::file_stats(candidate).exists)
            return candidate;
    }
    return wanted;
}

file_path SaveCapture(const bitmap& image, const std::string& folder, const std::string& project,
                      const std::string& composition) {
    nimbit::make_dir(file_path(folder));
    const file_path target =
        FreeCapturePath(CapturePath(folder, project, composition, nimbit::timer::get_formated_time(true)));
    return image.save_image(target, image_format::png) ? target : file_path();
}

std::vector<ListedCapture> ListCaptures(const std::string& folder) {
    std::vector<ListedCapture> captures;
    if (folder.empty())
        return captures;
    for (const nimbit::folder_entry& entry : nimbit::folder_enumerator{file_path(folder), false}) {
        if (entry.is_folder)
            continue;
        const std::string extension = nimbit::string_lower(entry.path.extension());
        if (extension != "png" && extension != "jpg")
            continue;
        const nimbit::file_stats stats(entry.path);
        if (stats.type == 0)
            captures.push_back({entry.path, stats.modified});
    }
    std::stable_sort(captures.begin(), captures.end(),
                     [](const ListedCapture& a, const ListedCapture& b) { return a.time > b.time; });
    return captures;
}

std::string DeleteQuestion(size_t count) {
    const std::string question = "Are you sure you want to delete ";
    return count == 1 ? question + "this image?" : question + "these " + std::to_string(count) + " images?";
}

std::vector<file_path> DeleteCaptures(const std::vector<file_path>& captures,
                                      const DeleteConfirmation& confirm) {
    std::vector<file_path> removed;
    if (captures.empty() || !confirm || !confirm("Delete?", DeleteQuestion(captures.size())))
        return removed;
    for (const file_path& capture : captures)
        if (nimbit::remove_file(capture))
            removed.push_back(capture);
    return removed;
}

bool ExportCapture(const file_path& capture, CaptureExport kind, const nimbit::ui::window* parent) {
    std::string title = "Save to File";
    std::vector<file_browser::file_filter> filters{PngExport.filter, JpgExport.filter};
    const char* extension = PngExport.extension;
    if (kind != CaptureExport::Either) {
        const ExportType& type = kind == CaptureExport::Jpg ? JpgExport : PngExport;
        title = type.title;
        filters = {type.filter};
        extension = type.extension;
    }
    const std::string proposed = file_path(capture.leaf(false)).append_extension(extension).to_string();
    const std::vector<file_path> chosen =
        file_browser::file_dialog(parent, file_browser::dialog_type::save, title, filters, false, proposed);
    if (chosen.empty())
        return false;
    const image_format format = kind == CaptureExport::Either ? FormatOf(chosen.front()) : FormatOf(kind);
    return Convert(capture, chosen.front(), format);
}

size_t ExportCapturesTo(const std::vector<file_path>& captures, CaptureExport kind, const file_path& folder) {
    const image_format format = FormatOf(kind);
    const char* extension = format == image_format::jpg ? JpgExport.extension : PngExport.extension;
    std::atomic<size_t> written{0};
    nimbit::thread_pool::get_instance().enqueue(
        static_cast<uint32_t>(captures.size()), [&](const nimbit::thread_worker_data& share) {
            for (uint32_t i = share.begin; i < share.end; ++i) {
                const file_path target =
                    folder.append(file_path(captures[i].leaf(false))).append_extension(extension);
                if (Convert(captures[i], target, format))
                    ++written;
            }
        });
    return written;
}

size_t ExportCaptures(const std::vector<file_path>& captures, CaptureExport kind,
                      const nimbit::ui::window* parent) {
    if (captures.empty())
        return 0;
    const file_path folder = file_browser::folder_select_dialog(parent, "Select Folder");
    return folder.empty() ? 0 : ExportCapturesTo(captures, kind, folder);
}

bool RevealCapture(const file_path& capture) {
    return nimbit::file_shell::show_in_explorer(capture, true);
}

} // namespace CaptureStore
