#include "ui/window_host.h"

#include "ui/message_box.h"

#include <QInputDialog>
#include <QThread>
#include <QWidget>

#include <cstdio>
#include <utility>

namespace velmora {

namespace {

QString Text(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

WindowHost::WindowHost(QWidget& window) : window_(window) {}

void WindowHost::InWindow(const std::function<void()>& action)
{
    if (QThread::currentThread() == thread())
        action();
    else
        QMetaObject::invokeMethod(this, action, Qt::BlockingQueuedConnection);
}

void WindowHost::ShowMessage(std::string_view text, Icon icon)
{
    static_cast<void>(Ask(text, kCaption, Buttons::Ok, icon, Answer::Ok));
}

Answer WindowHost::Ask(std::string_view text, std::string_view caption, Buttons buttons, Icon icon,
                       Answer defaultAnswer)
{
    // The window has asked already, at once: the run may have been far from its next step.
    if (isCancelling_)
        return Answer::Ok;
    Answer answer = Answer::Cancel;
    InWindow([&] { answer = AskInBox(window_, Text(text), buttons, icon, defaultAnswer, Text(caption)); });
    return answer;
}

std::optional<std::string> WindowHost::InputBox(std::string_view title, std::string_view prompt)
{
    std::optional<std::string> answer;
    InWindow([&] {
        QInputDialog dialog(&window_);
        dialog.setWindowTitle(Text(title));
        dialog.setLabelText(Text(prompt));
        if (dialog.exec() == QDialog::Accepted)
            answer = dialog.textValue().toStdString();
    });
    return answer;
}

void WindowHost::Attend()
{
    bool isToCancel = false;
    {
        std::unique_lock lock(mutex_);
        resumed_.wait(lock, [this] { return !paused_; });
        isToCancel = std::exchange(cancelRequested_, false);
        attention_ = false;
    }
    if (!isToCancel || !cancel_)
        return;
    isCancelling_ = true;
    cancel_();
    isCancelling_ = false;
}

void WindowHost::Pause()
{
    const std::lock_guard lock(mutex_);
    paused_ = true;
    attention_ = true;
}

void WindowHost::Resume()
{
    {
        const std::lock_guard lock(mutex_);
        paused_ = false;
    }
    resumed_.notify_all();
}

void WindowHost::RequestCancel()
{
    {
        const std::lock_guard lock(mutex_);
        paused_ = false;
        cancelRequested_ = true;
        attention_ = true;
    }
    resumed_.notify_all();
}

void WindowHost::Reset()
{
    const std::lock_guard lock(mutex_);
    paused_ = cancelRequested_ = false;
    attention_ = false;
    files_ = filesDone_ = records_ = recordsTotal_ = bytes_ = bytesTotal_ = 0;
    lines_.clear();
    controls_.reset();
    lastError_.clear();
}

std::atomic<std::int64_t>& WindowHost::TotalOf(ProgressBarId bar)
{
    return bar == ProgressBarId::Files ? files_ : bar == ProgressBarId::Records ? recordsTotal_ : bytesTotal_;
}

std::atomic<std::int64_t>& WindowHost::ValueOf(ProgressBarId bar)
{
    return bar == ProgressBarId::Files ? filesDone_ : bar == ProgressBarId::Records ? records_ : bytes_;
}

void WindowHost::SetProgressRange(ProgressBarId bar, std::int64_t maximum)
{
    TotalOf(bar).store(maximum, std::memory_order_relaxed);
}

void WindowHost::SetProgress(ProgressBarId bar, std::int64_t value)
{
    ValueOf(bar).store(value, std::memory_order_relaxed);
}

RunProgress WindowHost::Progress() const
{
    return {files_, filesDone_, records_, recordsTotal_, bytes_, bytesTotal_};
}

void WindowHost::ProtocolLineAdded(std::string_view line)
{
    const std::lock_guard lock(mutex_);
    lines_.append(Text(line));
}

QStringList WindowHost::TakeLines()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
}

void WindowHost::ErrorReported(int number, std::string_view description)
{
    const std::lock_guard lock(mutex_);
    lastError_ = QString::number(number) + ": " + Text(description);
}

QString WindowHost::LastError() const
{
    const std::lock_guard lock(mutex_);
    return lastError_;
}

void WindowHost::WriteResult(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

void WindowHost::ControlsChanged()
{
    if (watched_ == nullptr)
        return;
    const std::lock_guard lock(mutex_);
    controls_ = *watched_;
}

std::optional<Controls> WindowHost::TakeControls()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(controls_, std::nullopt);
}

} // namespace velmora
