// The news check's WinHTTP transport against loopback sockets: the form it posts and the count it
// reads, and a refused connection. (What the check makes of no answer is the POSIX tests' part: the
// check itself is the same code.)

#include "host/news_check.h"
#include "host/news_transport.h"

#include <gtest/gtest.h>
#include <winsock2.h>

#include <chrono>
#include <string>
#include <thread>

namespace {

// Sockets for the whole run (the process's end cleans them up).
[[maybe_unused]] const int winsock = [] {
    WSADATA data;
    return WSAStartup(MAKEWORD(2, 2), &data);
}();

// A socket bound to a free loopback port (listening when asked); the news address on it.
std::string BindLoopback(SOCKET& s, bool listening) {
    s = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address);
    int length = sizeof address;
    getsockname(s, reinterpret_cast<sockaddr*>(&address), &length);
    if (listening)
        listen(s, 1);
    return "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/scripts/quillo_desk/";
}

// A one-request server counts 12 and keeps the form; then a refused connection, an address that is
// none and port 0 end at once with no answer.
TEST(Win32NewsCheck, PostsTheFormAndCountsTheAnswerOrEndsPromptlyWithNothing) {
    SOCKET listener = INVALID_SOCKET;
    NewsCheck check(BindLoopback(listener, true));
    std::string request;
    std::thread server([&] {
        const SOCKET client = accept(listener, nullptr, nullptr);
        char buffer[4096];
        while (request.size() < 4 || request.compare(request.size() - 4, 4, "--\r\n") != 0) {
            const int n = recv(client, buffer, sizeof buffer, 0);
            if (n <= 0)
                break;
            request.append(buffer, static_cast<size_t>(n));
        }
        const std::string answer = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\nConnection: close\r\n\r\n12";
        send(client, answer.data(), static_cast<int>(answer.size()), 0);
        closesocket(client);
    });
    check.Check(1700000000);
    server.join();
    closesocket(listener);
    EXPECT_EQ(check.GetCount(), 12);
    EXPECT_EQ(request.rfind("POST /scripts/quillo_desk/ HTTP/1.1\r\n", 0), 0u) << request;
    EXPECT_NE(request.find("Content-Type: multipart/form-data; boundary="), std::string::npos) << request;
    const size_t updates = request.find("name=\"updates\"\r\n\r\n1\r\n");
    const size_t time = request.find("name=\"time\"\r\n\r\n1700000000\r\n");
    EXPECT_TRUE(updates < time && time != std::string::npos) << request;

    SOCKET bound = INVALID_SOCKET; // bound, never listening: the connection is refused
    for (const std::string& address :
         {BindLoopback(bound, false), std::string("not a url"), std::string("http://127.0.0.1:0/")}) {
        SCOPED_TRACE(address);
        NewsAnswer answer;
        const auto start = std::chrono::steady_clock::now();
        PostNewsForm(address, {{"updates", "1"}}, answer);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
        EXPECT_EQ(answer.length, 0u);
    }
    closesocket(bound);
}

} // namespace
