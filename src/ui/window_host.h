#pragma once

#include "host/host.h"
#include "settings/controls.h"

#include <QObject>
#include <QStringList>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>

class QWidget;

namespace velmora {

/// How far the run is, as the window draws it.
struct RunProgress {
    std::int64_t files = 0, filesDone = 0;
    std::int64_t records = 0, recordsTotal = 0;
    std::int64_t bytes = 0, bytesTotal = 0; ///< of the document that is being read; a total of 0 is not known
};

/// The window's side of a run that goes on in a thread of its own. What the run reports is laid down here, and the
/// window takes it when it draws: the run never waits for a drawing, and draws nothing itself. Only questions make it
/// wait.
///
/// The run has its own thread, because loading, building indexes and committing do not let events through every
/// 100 ms, while a window has to answer and to be drawn all the time.
class WindowHost : public QObject, public Host {
    Q_OBJECT

public:
    /// Boxes stand in front of `window`.
    explicit WindowHost(QWidget& window);

    /// What ControlsChanged() hands out copies of.
    void Watch(const Controls& controls) { watched_ = &controls; }
    /// `cancel` is called in the run's thread, once for each RequestCancel().
    void SetCancel(std::function<void()> cancel) { cancel_ = std::move(cancel); }

    // The run's side: from any thread.

    void ShowMessage(std::string_view text, Icon icon) override;
    [[nodiscard]] Answer Ask(std::string_view text, std::string_view caption, Buttons buttons, Icon icon,
                             Answer defaultAnswer) override;
    [[nodiscard]] std::optional<std::string> InputBox(std::string_view title, std::string_view prompt) override;
    void ProcessEvents() override
    {
        if (attention_.load(std::memory_order_relaxed))
            Attend();
    }
    void SetProgressRange(ProgressBarId bar, std::int64_t maximum) override;
    void SetProgress(ProgressBarId bar, std::int64_t value) override;
    void ProtocolLineAdded(std::string_view line) override;
    void ErrorReported(int number, std::string_view description) override;
    void WriteResult(std::string_view text) override;
    void ControlsChanged() override;
    [[nodiscard]] bool ShowsStructure() const override { return true; }
    [[nodiscard]] bool ReadsStandardInput() const override { return false; }

    // The window's side.

    /// The run stands still at its next step until the question is answered.
    void Pause();
    void Resume();
    /// The run ends at its next step: the person has answered already.
    void RequestCancel();
    /// A new run begins: nothing is left of the last one.
    void Reset();

    [[nodiscard]] RunProgress Progress() const;
    /// The lines since the last call, the oldest first.
    [[nodiscard]] QStringList TakeLines();
    /// The controls as the run last changed them, if it has since the last call.
    [[nodiscard]] std::optional<Controls> TakeControls();
    [[nodiscard]] QString LastError() const;

private:
    void Attend();
    [[nodiscard]] std::atomic<std::int64_t>& TotalOf(ProgressBarId bar);
    [[nodiscard]] std::atomic<std::int64_t>& ValueOf(ProgressBarId bar);
    /// Runs `action` in the window's thread and waits for it.
    void InWindow(const std::function<void()>& action);

    QWidget& window_;
    const Controls* watched_ = nullptr;
    std::function<void()> cancel_;

    std::atomic<bool> attention_ = false; ///< the run is to look at the two below
    mutable std::mutex mutex_;
    std::condition_variable resumed_;
    bool paused_ = false;
    bool cancelRequested_ = false;
    bool isCancelling_ = false; ///< used by the run's thread only

    std::atomic<std::int64_t> files_ = 0, filesDone_ = 0, records_ = 0, recordsTotal_ = 0, bytes_ = 0, bytesTotal_ = 0;
    QStringList lines_;
    std::optional<Controls> controls_;
    QString lastError_;
};

} // namespace velmora
