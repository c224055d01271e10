#include "host/news_check.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <thread>

namespace {

// A socket bound to a free loopback port; the port.
int BindLoopback(int& fd) {
    fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    socklen_t length = sizeof address;
    getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    return ntohs(address.sin_port);
}

std::string LoopbackUrl(int port) {
    return "http://127.0.0.1:" + std::to_string(port) + "/scripts/quillo_desk/";
}

// A one-request HTTP server on 127.0.0.1: answers the next request with body and keeps the request.
class LoopbackServer {
public:
    explicit LoopbackServer(std::string body) : body(std::move(body)) {
        port = BindLoopback(listener);
        listen(listener, 1);
        worker = std::thread([this] { Serve(); });
    }
    ~LoopbackServer() {
        worker.join();
        close(listener);
    }
    std::string Url() const { return LoopbackUrl(port); }
    std::string request;

private:
    void Serve() {
        const int client = accept(listener, nullptr, nullptr);
        // Read the head, then as many body bytes as it announces.
        char buffer[4096];
        size_t bodyStart = std::string::npos, contentLength = 0;
        while (bodyStart == std::string::npos || request.size() < bodyStart + contentLength) {
            const ssize_t n = recv(client, buffer, sizeof buffer, 0);
            if (n <= 0)
                break;
            request.append(buffer, static_cast<size_t>(n));
            if (bodyStart == std::string::npos &&
                (bodyStart = request.find("\r\n\r\n")) != std::string::npos) {
                bodyStart += 4;
                const size_t header = request.find("Content-Length: ");
                if (header != std::string::npos)
                    contentLength = std::stoul(request.substr(header + 16));
                if (request.find("Expect: 100-continue") != std::string::npos)
                    send(client, "HTTP/1.1 100 Continue\r\n\r\n", 25, 0);
            }
        }
        const std::string answer = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) +
                                   "\r\nConnection: close\r\n\r\n" + body;
        send(client, answer.data(), answer.size(), 0);
        close(client);
    }

    std::string body;
    int listener = -1, port = 0;
    std::thread worker;
};

TEST(NewsCheck, CountsOneOrTwoDigitAnswersOnly) {
    const std::pair<std::string, int32_t> cases[] = {
        {"7", 7},   {"12", 12}, {"0", 0},
        {"4x", 4}, // leading digits, as a number parser reads them
        {"123", 0}, {"", 0},    {std::string(100000, '5'), 0}, // the last arrives in several pieces
    };
    for (const auto& [answer, count] : cases) {
        LoopbackServer server(answer);
        NewsCheck check(server.Url());
        EXPECT_EQ(check.GetCount(), -1); // unknown until a check has finished
        check.Check(1234);
        EXPECT_EQ(check.GetCount(), count) << answer.substr(0, 8);
    }
}

TEST(NewsCheck, PostsTheFormFields) {
    LoopbackServer server("3");
    NewsCheck check(server.Url());
    check.Check(1700000000);
    EXPECT_EQ(check.GetCount(), 3);
    EXPECT_EQ(server.request.rfind("POST /scripts/quillo_desk/ HTTP/1.1\r\n", 0), 0u) << server.request;
    const size_t updates = server.request.find("name=\"updates\"\r\n\r\n1\r\n");
    const size_t time = server.request.find("name=\"time\"\r\n\r\n1700000000\r\n");
    EXPECT_NE(updates, std::string::npos) << server.request;
    EXPECT_NE(time, std::string::npos) << server.request;
    EXPECT_LT(updates, time);
}

TEST(NewsCheck, NoServerCountsZero) {
    int fd = -1; // bound, never listening: the connection is refused
    NewsCheck check(LoopbackUrl(BindLoopback(fd)));
    check.Check(0);
    close(fd);
    EXPECT_EQ(check.GetCount(), 0);
}

TEST(NewsCheck, AnswerArrivingInPiecesKeepsAtMost62Bytes) {
    NewsAnswer answer;
    answer.Append("1", 1);
    answer.Append("2", 1);
    EXPECT_EQ(answer.Count(), 12);
    answer.Clear();
    const std::string piece(31, '1');
    answer.Append(piece.data(), piece.size());
    answer.Append(piece.data(), piece.size());
    EXPECT_EQ(answer.length, 62u);
    EXPECT_EQ(answer.buffer[62], '\0');
    answer.Append("1", 1); // the 63rd byte makes the answer over-long for good
    EXPECT_EQ(answer.length, NewsAnswer::OverLong);
    answer.Append("", 0);
    EXPECT_EQ(answer.length, NewsAnswer::OverLong);
    EXPECT_EQ(answer.Count(), 0);
}

} // namespace
