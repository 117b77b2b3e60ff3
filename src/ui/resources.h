#pragma once

class QCoreApplication;

namespace velmora {

/// By which desktops know the program: the name of its desktop file, of its icon, and of what describes it in stores.
inline constexpr const char* kDesktopId = "io.github.velmora.velmora";

/// What the program carries with it: its icon, and the texts in the system's language where they are translated. To be
/// called before the first window is made.
void InstallResources(QCoreApplication& application);

} // namespace velmora
