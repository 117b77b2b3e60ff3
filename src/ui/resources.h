#pragma once

class QCoreApplication;

namespace velmora {

/// What the program carries with it: its icon, and the texts in the system's language where they are translated. To be
/// called before the first window is made.
void InstallResources(QCoreApplication& application);

} // namespace velmora
