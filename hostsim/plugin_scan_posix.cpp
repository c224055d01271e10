// Finding plug-ins as the Mac host does: bundles (<name>.plugin) below the Plug-ins folder, each with
// its PiPL in a resource file in Contents/Resources and its code in Contents/MacOS.

#include "hostsim/plugin_bundle.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace hostsim {

namespace {

namespace fs = std::filesystem;

// A resource file is small; anything larger is not one.
constexpr uintmax_t MaxResourceFile = 16u << 20;

bool Fail(std::string& error, std::string why) {
    error = std::move(why);
    return false;
}

bool ReadSmallFile(const fs::path& path, std::string& out) {
    std::error_code ec;
    const uintmax_t size = fs::file_size(path, ec);
    if (ec || size > MaxResourceFile)
        return false;
    std::ifstream in(path, std::ios::binary);
    out.resize(size);
    return in.read(out.data(), static_cast<std::streamsize>(size)).gcount() ==
           static_cast<std::streamsize>(size);
}

// CFBundleExecutable from Contents/Info.plist, or empty.
std::string BundleExecutable(const fs::path& bundle) {
    std::string plist;
    if (!ReadSmallFile(bundle / "Contents" / "Info.plist", plist))
        return {};
    const std::string key = "<key>CFBundleExecutable</key>";
    size_t at = plist.find(key);
    if (at == std::string::npos || (at = plist.find("<string>", at + key.size())) == std::string::npos)
        return {};
    at += 8;
    const size_t end = plist.find("</string>", at);
    return end == std::string::npos ? std::string() : plist.substr(at, end - at);
}

} // namespace

bool ReadPluginBundle(const std::string& bundle, PluginBundle& out, std::string& error) {
    std::error_code ec;
    const fs::path contents = fs::path(bundle) / "Contents";
    std::vector<fs::path> resourceFiles;
    for (fs::directory_iterator it(contents / "Resources", ec), end; !ec && it != end; it.increment(ec)) {
        if (it->path().extension() == ".rsrc")
            resourceFiles.push_back(it->path());
    }
    std::sort(resourceFiles.begin(), resourceFiles.end());
    bool found = false;
    for (const fs::path& file : resourceFiles) {
        std::string fork;
        std::vector<std::string_view> pipls;
        if (!ReadSmallFile(file, fork))
            return Fail(error, file.filename().string() + ": cannot be read");
        if (!ReadResources(fork, "PiPL", pipls, error) ||
            (!pipls.empty() && !ParsePipl(pipls.front(), out.pipl, error))) {
            error = file.filename().string() + ": " + error;
            return false;
        }
        if ((found = !pipls.empty()))
            break;
    }
    if (!found)
        return Fail(error, "no PiPL resource");
    if (!CheckPluginPipl(out.pipl, error))
        return false;
    const std::string executable = BundleExecutable(bundle);
    if (executable.empty())
        return Fail(error, "Info.plist names no CFBundleExecutable");
    out.bundle = bundle;
    out.code = (contents / "MacOS" / executable).string();
    if (!fs::is_regular_file(out.code, ec))
        return Fail(error, "no code at Contents/MacOS/" + executable);
    return true;
}

std::vector<std::string> FindPluginCandidates(const std::string& folder, std::vector<std::string>& skipped) {
    std::vector<std::string> bundles;
    std::error_code ec;
    for (fs::recursive_directory_iterator it(folder, fs::directory_options::skip_permission_denied, ec), end;
         !ec && it != end; it.increment(ec)) {
        if (it->path().extension() == ".plugin" && it->is_directory(ec)) {
            bundles.push_back(it->path().string());
            it.disable_recursion_pending(); // a bundle's insides are its own
        }
    }
    if (ec)
        skipped.push_back(folder + ": " + ec.message());
    return bundles;
}

} // namespace hostsim
