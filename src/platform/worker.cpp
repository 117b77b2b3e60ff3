#include "platform/worker.h"

#include <system_error>
#include <utility>

namespace velmora {

std::unique_ptr<Worker> Worker::Start(std::function<void()> work)
{
    try {
        return std::unique_ptr<Worker>(new Worker(std::move(work)));
    } catch (const std::system_error&) {
        return nullptr;
    }
}

Worker::Worker(std::function<void()> work)
    : work_(std::move(work)), thread_([this] {
          try {
              work_();
          } catch (...) {
              failure_ = std::current_exception();
          }
      })
{
}

Worker::~Worker()
{
    if (thread_.joinable())
        thread_.join();
}

void Worker::Join()
{
    thread_.join();
    if (failure_)
        std::rethrow_exception(std::exchange(failure_, nullptr));
}

} // namespace velmora
