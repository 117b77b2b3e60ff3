#include "support/http_server.h"

#include <arpa/inet.h>
#include <array>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace velmora::testing {
namespace {

/// A file descriptor that is closed at the end.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number)
    {
        if (number_ < 0)
            throw std::runtime_error("the test's web server cannot work");
    }
    ~Descriptor() { ::close(number_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int operator*() const noexcept { return number_; }

private:
    int number_;
};

/// Binds `socket` to a free port of the loopback interface and gives that port.
std::uint16_t BindToFreePort(int socket)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(socket, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        throw std::runtime_error("no free port");
    return ntohs(address.sin_port);
}

int NewSocket()
{
    return ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

std::string UrlAt(std::uint16_t port, std::string_view path)
{
    return "http://127.0.0.1:" + std::to_string(port) + std::string(path);
}

} // namespace

HttpAnswer Answer(std::string_view status, std::string_view headers, std::string_view body)
{
    return {"HTTP/1.1 " + std::string(status) + "\r\n" + std::string(headers) +
                "Connection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body),
            false};
}

struct HttpServer::State {
    explicit State(std::function<HttpAnswer(const std::string&)> theAnswer)
        : answer(std::move(theAnswer)), listening(NewSocket()), stop(::eventfd(0, EFD_CLOEXEC)),
          port(BindToFreePort(*listening))
    {
        if (::listen(*listening, 8) != 0)
            throw std::runtime_error("cannot listen");
        thread = std::thread([this] { Serve(); });
    }
    ~State()
    {
        ::eventfd_write(*stop, 1);
        thread.join();
    }

    /// Waits until `descriptor` has something to read; false when the server is to end.
    bool WaitFor(int descriptor) const
    {
        std::array<pollfd, 2> waiting{pollfd{descriptor, POLLIN, 0}, pollfd{*stop, POLLIN, 0}};
        while (::poll(waiting.data(), waiting.size(), -1) < 0) {
        }
        return waiting[1].revents == 0;
    }

    void Serve()
    {
        while (WaitFor(*listening))
            ServeOne(Descriptor(::accept4(*listening, nullptr, nullptr, SOCK_CLOEXEC)));
    }

    void ServeOne(const Descriptor& client)
    {
        std::string head;
        std::array<char, 4096> buffer;
        while (head.find("\r\n\r\n") == head.npos) {
            const ssize_t count = WaitFor(*client) ? ::recv(*client, buffer.data(), buffer.size(), 0) : 0;
            if (count <= 0)
                return;
            head.append(buffer.data(), static_cast<std::size_t>(count));
        }
        const HttpAnswer given = answer(head);
        { // before the answer: who has got it may ask at once
            const std::lock_guard lock(mutex);
            requests.push_back(std::move(head));
        }
        (void)::send(*client, given.bytes.data(), given.bytes.size(), MSG_NOSIGNAL);
        while (given.stalls && WaitFor(*client) && ::recv(*client, buffer.data(), buffer.size(), 0) > 0) {
        }
    }

    const std::function<HttpAnswer(const std::string&)> answer;
    const Descriptor listening;
    const Descriptor stop;
    const std::uint16_t port;
    std::mutex mutex;
    std::vector<std::string> requests;
    std::thread thread;
};

HttpServer::HttpServer(std::function<HttpAnswer(const std::string& request)> answer)
    : state_(std::make_unique<State>(std::move(answer)))
{
}

HttpServer::~HttpServer() = default;

std::string HttpServer::Url(std::string_view path) const
{
    return UrlAt(state_->port, path);
}

std::vector<std::string> HttpServer::Requests() const
{
    const std::lock_guard lock(state_->mutex);
    return state_->requests;
}

std::string DeadUrl()
{
    // Bound, but nobody listens: no other program can take the port meanwhile.
    static const Descriptor socket(NewSocket());
    static const std::uint16_t port = BindToFreePort(*socket);
    return UrlAt(port, "/");
}

} // namespace velmora::testing
