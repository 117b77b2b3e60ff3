#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <thread>

namespace velmora {

/// One piece of work in a thread of its own, which has ended when this object is gone.
class Worker {
public:
    /// nullptr when the system has no thread to give: nothing has been done then.
    [[nodiscard]] static std::unique_ptr<Worker> Start(std::function<void()> work);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// Waits for the end of the work, and throws what it has thrown.
    void Join();

private:
    explicit Worker(std::function<void()> work);

    std::function<void()> work_;
    std::exception_ptr failure_;
    std::thread thread_; ///< last: it uses the others
};

} // namespace velmora
