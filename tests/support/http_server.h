#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::testing {

/// What a web server gives for one request.
struct HttpAnswer {
    std::string bytes;   ///< as they go over the wire
    bool stalls = false; ///< the connection stays open behind them, until the client leaves
};

/// `status` (such as "200 OK"), further header lines (each ends in CR LF), and a body with its length.
[[nodiscard]] HttpAnswer Answer(std::string_view status, std::string_view headers, std::string_view body);

/// A web server on the loopback interface, at a port that was free, one connection after another.
class HttpServer {
public:
    /// `answer` is called with each request's head, on another thread.
    explicit HttpServer(std::function<HttpAnswer(const std::string& request)> answer);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// The address of `path`, which begins with "/".
    [[nodiscard]] std::string Url(std::string_view path) const;
    /// The heads of all requests until now.
    [[nodiscard]] std::vector<std::string> Requests() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// An address on the loopback interface where nobody listens.
[[nodiscard]] std::string DeadUrl();

} // namespace velmora::testing
