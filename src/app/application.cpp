#include "app/application.h"

#include "app/version.h"
#include "mapping/tag_map_file.h"
#include "settings/command_line.h"

namespace velmora {

void Application::Form_Load(std::string_view commandLine)
{
    Controls& controls = job_.controls;
    controls = Controls();
    tagMap_.Clear();
    controls.lblVersion = Version();
    ApplyCommandLine(commandLine, controls, [this](std::string_view token) {
        job_.log.ProtocolAppend("Unknown parameter:" + std::string(token));
    });
    job_.settings.blDebug = controls.chkDebug.Checked();
    // Whoever names an address wants it: a file named as well is what the box shows again afterwards.
    controls.tabSourceType = controls.txtXML_URL.text.empty() ? 0 : 1;
    controls.UpdateEnabled();
    // Known before the mapping file is read: an error in it must not stop an unattended run with a box.
    job_.settings.blQuiet = controls.chkQuiet.Checked();

    job_.host.SetProgressRange(ProgressBarId::Records, 100);
    const bool isMappingNamed = !controls.txtFILE_MAPPING.text.empty();
    mappingLoaded_ = !isMappingNamed || velLoadTagMapping(job_, tagMap_, controls.txtFILE_MAPPING.text);
    controls.chkEnableTagMapping.value = isMappingNamed ? CheckState::Checked : CheckState::Unchecked;
    job_.host.ControlsChanged();
}

} // namespace velmora
