#include "host/news_check.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>

namespace {

// A socket bound to a free loopback port; the news address on it.
std::string BindLoopback(int& fd) {
    fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    socklen_t length = sizeof address;
    getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    return "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/scripts/quillo_desk/";
}

TEST(NewsCheck, CountsOneOrTwoDigitAnswersOnlyAndKeepsAtMost62Bytes) {
    const std::pair<std::string, int32_t> cases[] = {
        {"7", 7},   {"12", 12}, {"0", 0}, {"4x", 4}, // leading digits, as a number parser reads them
        {"123", 0}, {"", 0},
    };
    NewsAnswer answer; // one for all: Clear must forget the last answer
    for (const auto& [text, count] : cases) {
        answer.Clear();
        for (char c : text) // one byte a piece, as a slow connection delivers it
            answer.Append(&c, 1);
        EXPECT_EQ(answer.Count(), count) << text;
    }
    // Pieces fill the buffer up to 62 bytes; the 63rd makes the answer over-long for good.
    answer.Clear();
    const std::string piece(31, '1');
    answer.Append(piece.data(), piece.size());
    answer.Append(piece.data(), piece.size());
    EXPECT_EQ(std::pair(answer.length, answer.buffer[62]), std::pair(decltype(answer.length){62}, '\0'));
    answer.Append("1", 1);
    answer.Append("", 0);
    EXPECT_EQ(std::pair(answer.length, answer.Count()), std::pair(NewsAnswer::OverLong, 0));
}

// A one-request HTTP server on 127.0.0.1 answers "3" and keeps the multipart form it was sent.
TEST(NewsCheck, PostsTheFormFieldsAndCountsTheAnswerOrZeroWithoutAServer) {
    int listener = -1;
    NewsCheck check(BindLoopback(listener));
    listen(listener, 1);
    std::string request;
    std::thread server([&] {
        const int client = accept(listener, nullptr, nullptr);
        char buffer[4096];
        // Up to the form's closing boundary (curl may ask for leave to send the body first).
        while (request.size() < 4 || request.compare(request.size() - 4, 4, "--\r\n") != 0) {
            const ssize_t n = recv(client, buffer, sizeof buffer, 0);
            if (n <= 0)
                break;
            if (request.find("Expect: 100-continue") == std::string::npos &&
                std::string(buffer, static_cast<size_t>(n)).find("Expect: 100-continue") != std::string::npos)
                send(client, "HTTP/1.1 100 Continue\r\n\r\n", 25, 0);
            request.append(buffer, static_cast<size_t>(n));
        }
        const std::string answer = "HTTP/1.1 200 OK\r\nContent-Length: 1\r\nConnection: close\r\n\r\n3";
        send(client, answer.data(), answer.size(), 0);
        close(client);
    });
    EXPECT_EQ(check.GetCount(), -1); // unknown until a check has finished
    check.Check(1700000000);
    server.join();
    close(listener);
    EXPECT_EQ(check.GetCount(), 3);
    EXPECT_EQ(request.rfind("POST /scripts/quillo_desk/ HTTP/1.1\r\n", 0), 0u) << request;
    const size_t updates = request.find("name=\"updates\"\r\n\r\n1\r\n");
    const size_t time = request.find("name=\"time\"\r\n\r\n1700000000\r\n");
    EXPECT_TRUE(updates < time && time != std::string::npos) << request;

    int fd = -1; // bound, never listening: the connection is refused
    NewsCheck refused(BindLoopback(fd));
    refused.Check(0);
    close(fd);
    EXPECT_EQ(refused.GetCount(), 0);

    // The environment may point the check elsewhere; an empty setting is none.
    ::setenv("QUILLO_NEWS_URL", "http://127.0.0.1:9/news", 1);
    EXPECT_EQ(NewsCheck::DefaultUrl(), "http://127.0.0.1:9/news");
    ::setenv("QUILLO_NEWS_URL", "", 1);
    EXPECT_NE(NewsCheck::DefaultUrl(), "");
    ::unsetenv("QUILLO_NEWS_URL");
}

} // namespace
