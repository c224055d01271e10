#pragma once

// The news check's HTTP POST, over libcurl on the Mac and Linux (news_transport_posix.cpp) and over
// WinHTTP on Windows (news_transport_win32.cpp).

#include <string>
#include <utility>
#include <vector>

struct NewsAnswer;

using FormFields = std::vector<std::pair<std::string, std::string>>;

// Posts fields, in order, as a multipart form to url and appends the answer's body to answer as it
// arrives, whatever the status. Blocks until the transfer ends (the check's own thread calls it); a
// failed transfer leaves whatever arrived, usually nothing. Never throws.
void PostNewsForm(const std::string& url, const FormFields& fields, NewsAnswer& answer) noexcept;
