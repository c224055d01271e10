#include "nimbit/filesystem/known_folders.h"

#include "nimbit/filesystem/file_operations.h"

#include <vector>

// The modes shared by Linux and Windows; each platform supplies the folders themselves.

namespace nimbit {

namespace {

// The product settings of the machine-wide folder: lines of key=value; "AssetsPath" is the one read.
std::string read_assets_path(const file_path& settings) {
    std::vector<unsigned char> bytes;
    if (!read_file(settings, bytes, 1 << 20))
        return {};
    constexpr std::string_view key = "AssetsPath=";
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (size_t start = 0; start < text.size();) {
        size_t end = text.find('\n', start);
        if (end == std::string_view::npos)
            end = text.size();
        std::string_view line = text.substr(start, end - start);
        while (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        if (line.substr(0, key.size()) == key)
            return std::string(line.substr(key.size()));
        start = end + 1;
    }
    return {};
}

} // namespace

file_path get_docs_data_path(std::string_view product, std::string_view variable, int mode) {
    if (mode == 0) {
        const file_path common = get_common_data_path();
        if (!common.empty() && !product.empty()) {
            std::string assets =
                read_assets_path(common.append(file_path("Tarvelo")).append(file_path(product)));
            if (assets.size() > 1)
                return file_path(std::move(assets));
        }
        if (!variable.empty())
            if (std::optional<std::string> value = detail::environment(variable))
                return file_path(std::move(*value));
        return get_docs_data_path();
    }
    if (mode == 2) {
        if (std::optional<std::string> dir = detail::environment("QUILLO_SHARED_DOCS_DIR");
            dir && !dir->empty())
            return file_path(std::move(*dir));
        return detail::shared_docs_path();
    }
    return get_docs_data_path();
}

file_path get_common_data_path(std::string_view variable, int mode) {
    if (mode == 1)
        return get_user_data_path();
    if (mode == 0 && !variable.empty())
        if (std::optional<std::string> value = detail::environment(variable))
            return file_path(std::move(*value));
    return get_common_data_path();
}

} // namespace nimbit
