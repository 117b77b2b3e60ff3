#pragma once

#include "app/application.h"
#include "ui/window_host.h"

#include <QElapsedTimer>
#include <QObject>

#include <thread>

namespace velmora {

/// One run at a time, in a thread of its own. As long as it goes on, application and controls are the thread's.
class Conversion : public QObject {
    Q_OBJECT

public:
    Conversion(Application& application, WindowHost& host, QObject* parent = nullptr);
    /// Waits for the run's end.
    ~Conversion() override;

    void Start();
    [[nodiscard]] bool IsRunning() const noexcept { return thread_.joinable(); }
    [[nodiscard]] std::int64_t Milliseconds() const { return clock_.elapsed(); }
    /// Of the last run.
    [[nodiscard]] const RunOutcome& Outcome() const noexcept { return outcome_; }

signals:
    void Finished();

private:
    void End();

    Application& application_;
    WindowHost& host_;
    std::thread thread_;
    RunOutcome outcome_;
    QElapsedTimer clock_;
};

} // namespace velmora
