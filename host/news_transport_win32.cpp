#include "host/news_check.h"
#include "host/news_transport.h"
#include "nimbit/utils/wide_string_win32.h"

#include <windows.h>
#include <winhttp.h>

namespace {

// Closes a WinHTTP handle however the transfer ends.
struct InternetHandle {
    HINTERNET handle;
    ~InternetHandle() {
        if (handle != nullptr)
            WinHttpCloseHandle(handle);
    }
};

// Between the form's parts; the fields are digits.
constexpr char Boundary[] = "------------------------quillo7d3f1a0c92b4e856";

// The form as libcurl writes it: one part per field, then the closing boundary.
std::string MultipartBody(const FormFields& fields) {
    std::string body;
    for (const auto& [name, value] : fields) {
        body.append("--").append(Boundary).append("\r\nContent-Disposition: form-data; name=\"");
        body.append(name).append("\"\r\n\r\n").append(value).append("\r\n");
    }
    body.append("--").append(Boundary).append("--\r\n");
    return body;
}

} // namespace

void PostNewsForm(const std::string& url, const FormFields& fields, NewsAnswer& answer) noexcept {
    try {
        const std::wstring wideUrl = nimbit::widen(url);
        URL_COMPONENTS parts{};
        parts.dwStructSize = sizeof parts;
        parts.dwHostNameLength = parts.dwUrlPathLength = parts.dwExtraInfoLength = static_cast<DWORD>(-1);
        if (!WinHttpCrackUrl(wideUrl.c_str(), 0, 0, &parts))
            return;
        const std::wstring host(parts.lpszHostName, parts.dwHostNameLength);
        std::wstring path(parts.lpszUrlPath, parts.dwUrlPathLength + parts.dwExtraInfoLength);
        if (path.empty())
            path = L"/";

        const InternetHandle session{WinHttpOpen(L"Quillo", WINHTTP_ACCESS_TYPE_DEFAULT_PROXY,
                                                 WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0)};
        if (session.handle == nullptr)
            return;
        // libcurl's defaults, which the other platforms run with: up to 300 s to connect, name
        // resolution included, and no limit on the transfer.
        WinHttpSetTimeouts(session.handle, 0, 300000, 0, 0);
        const InternetHandle connection{WinHttpConnect(session.handle, host.c_str(), parts.nPort, 0)};
        if (connection.handle == nullptr)
            return;
        const InternetHandle request{WinHttpOpenRequest(
            connection.handle, L"POST", path.c_str(), nullptr, WINHTTP_NO_REFERER,
            WINHTTP_DEFAULT_ACCEPT_TYPES, parts.nScheme == INTERNET_SCHEME_HTTPS ? WINHTTP_FLAG_SECURE : 0)};
        if (request.handle == nullptr)
            return;
        // libcurl reads a redirect's own body, as it follows none.
        DWORD noRedirects = WINHTTP_DISABLE_REDIRECTS;
        WinHttpSetOption(request.handle, WINHTTP_OPTION_DISABLE_FEATURE, &noRedirects, sizeof noRedirects);

        std::string body = MultipartBody(fields);
        const std::wstring header = L"Content-Type: multipart/form-data; boundary=" + nimbit::widen(Boundary);
        const auto size = static_cast<DWORD>(body.size());
        if (!WinHttpSendRequest(request.handle, header.c_str(), static_cast<DWORD>(-1), body.data(), size,
                                size, 0) ||
            !WinHttpReceiveResponse(request.handle, nullptr))
            return;
        char buffer[256];
        DWORD read = 0;
        while (WinHttpReadData(request.handle, buffer, sizeof buffer, &read) && read > 0)
            answer.Append(buffer, read);
    } catch (...) {
        // Out of memory for the request: as good as no answer.
    }
}
