#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace velmora {

/// What goes from one thread to another, first in, first out. Whoever is faster waits.
template <class T>
class BoundedQueue {
public:
    explicit BoundedQueue(std::size_t capacity) : capacity_(capacity) {}

    /// Waits until there is room. False when the queue is closed: `item` is gone then.
    [[nodiscard]] bool Push(T item)
    {
        {
            std::unique_lock lock(mutex_);
            hasRoom_.wait(lock, [this] { return isClosed_ || items_.size() < capacity_; });
            if (isClosed_)
                return false;
            items_.push_back(std::move(item));
        }
        hasItems_.notify_one();
        return true;
    }

    /// Waits until there is an item. nullopt when there is none and the queue is closed.
    [[nodiscard]] std::optional<T> Pop()
    {
        std::optional<T> item;
        {
            std::unique_lock lock(mutex_);
            hasItems_.wait(lock, [this] { return isClosed_ || !items_.empty(); });
            if (items_.empty())
                return std::nullopt;
            item.emplace(std::move(items_.front()));
            items_.pop_front();
        }
        hasRoom_.notify_one();
        return item;
    }

    /// Nothing more goes in; what is in it can still be taken.
    void Close() noexcept
    {
        {
            const std::lock_guard lock(mutex_);
            isClosed_ = true;
        }
        hasRoom_.notify_all();
        hasItems_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable hasRoom_, hasItems_;
    std::deque<T> items_;
    const std::size_t capacity_;
    bool isClosed_ = false;
};

} // namespace velmora
