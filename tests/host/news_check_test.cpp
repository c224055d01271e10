#include "host/news_check.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace {

// A one-request HTTP server on 127.0.0.1: answers the next request with body, after the test
// releases it when holdAnswer is set, and keeps the request it received.
class LoopbackServer {
public:
    explicit LoopbackServer(std::string body, bool holdAnswer = false)
        : body(std::move(body)), held(holdAnswer) {
        listener = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address);
        listen(listener, 1);
        socklen_t length = sizeof address;
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
        port = ntohs(address.sin_port);
        worker = std::thread([this] { Serve(); });
    }
    ~LoopbackServer() {
        Release();
        worker.join();
        close(listener);
    }

    std::string Url() const { return "http://127.0.0.1:" + std::to_string(port) + "/scripts/quillo_desk/"; }
    void Release() {
        std::lock_guard lock(mutex);
        held = false;
        released.notify_all();
    }
    std::string request;

private:
    void Serve() {
        const int client = accept(listener, nullptr, nullptr);
        if (client < 0)
            return;
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
        {
            std::unique_lock lock(mutex);
            released.wait(lock, [this] { return !held; });
        }
        const std::string answer = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) +
                                   "\r\nConnection: close\r\n\r\n" + body;
        send(client, answer.data(), answer.size(), 0);
        close(client);
    }

    std::string body;
    bool held;
    int listener = -1;
    int port = 0;
    std::thread worker;
    std::mutex mutex;
    std::condition_variable released;
};

int32_t CountFor(const std::string& answer) {
    LoopbackServer server(answer);
    NewsCheck check(server.Url());
    check.Check(1234);
    return check.GetCount();
}

TEST(NewsCheck, CountsOneOrTwoDigitAnswersOnly) {
    EXPECT_EQ(CountFor("7"), 7);
    EXPECT_EQ(CountFor("12"), 12);
    EXPECT_EQ(CountFor("0"), 0);
    EXPECT_EQ(CountFor("4x"), 4); // leading digits, as a number parser reads them
    EXPECT_EQ(CountFor("123"), 0);
    EXPECT_EQ(CountFor(""), 0);
    EXPECT_EQ(CountFor(std::string(100000, '5')), 0); // arrives in several pieces
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

TEST(NewsCheck, CountIsUnknownUntilTheAnswerArrives) {
    LoopbackServer server("5", /*holdAnswer=*/true);
    NewsCheck check(server.Url());
    EXPECT_EQ(check.GetCount(), -1);
    std::thread worker([&] { check.Check(0); });
    // The server holds its answer: however long we look, the count stays unknown.
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(check.GetCount(), -1);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    server.Release();
    worker.join();
    EXPECT_EQ(check.GetCount(), 5);
}

TEST(NewsCheck, NoServerCountsZero) {
    int port = 0;
    {
        LoopbackServer closed("1"); // learn a free port, then let it close
        const std::string url = closed.Url();
        port = std::stoi(url.substr(url.rfind(':') + 1));
        closed.Release();
        NewsCheck drain(url); // let the server thread finish its one request
        drain.Check(0);
    }
    NewsCheck check("http://127.0.0.1:" + std::to_string(port) + "/scripts/quillo_desk/");
    check.Check(0);
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
