#pragma once

#include "host/host.h"
#include "settings/controls.h"

#include <string>
#include <string_view>

namespace velmora {

class Desktop;
struct FilePicker;

/// The small buttons beside the path boxes: they fill a box through a dialog, or show in another program what a box
/// names. Boxes are read and written, nothing else.
class Launchers {
public:
    /// `programFolder` is where placeholders are made and what the folder button shows when nothing is named.
    Launchers(Controls& controls, Host& host, Desktop& desktop, std::string programFolder);

    /// The button of that control name. True when a box was changed.
    bool Press(std::string_view button);

    /// Opens the folder that is there, or the nearest one above it.
    void OpenFolderOf(std::string path);
    /// Opens the file in the program for its kind.
    void OpenFile(const std::string& path) { OpenInProgram(path, {}); }

    /// False when it is not installed.
    [[nodiscard]] bool OpenManual();

private:
    [[nodiscard]] bool Pick(const FilePicker& picker);
    void OpenInProgram(const std::string& path, std::string_view placeholder);
    void OpenDirectory();
    void Complain(const std::string& text);

    Controls& controls_;
    Host& host_;
    Desktop& desktop_;
    const std::string programFolder_;
};

} // namespace velmora
