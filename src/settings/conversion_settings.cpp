#include "settings/conversion_settings.h"

#include "platform/paths.h"
#include "settings/options.h"

#include <string_view>

namespace velmora {

namespace {

/// `text` with every backslash that is followed by a "t" turned into a tab together with it.
std::string WithTabs(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.substr(i, 2) == "\\t") {
            result += '\t';
            ++i;
        } else {
            result += text[i];
        }
    }
    return result;
}

/// What one option's control says now.
class Reader {
public:
    Reader(const Option& option, const Controls& controls, ConversionSettings& settings)
        : option_(option), controls_(controls), settings_(settings), textMode_(!controls.txtFILE_TXT.text.empty())
    {
    }

    void operator()(std::monostate) const {}
    void operator()(bool ConversionSettings::*setting) const
    {
        const CheckControl& box = controls_.*std::get<CheckControl Controls::*>(option_.control);
        switch (option_.reading) {
        case Reading::Always:
            settings_.*setting = box.Checked();
            break;
        case Reading::WhileEnabled:
            settings_.*setting = box.Checked() && box.enabled;
            break;
        case Reading::GreyIsOn:
            settings_.*setting = box.value != CheckState::Unchecked;
            break;
        case Reading::InTextMode:
            if (textMode_)
                settings_.*setting = box.Checked();
            break;
        case Reading::OffOrTextMode:
            settings_.*setting = textMode_ && box.Checked();
            break;
        }
    }
    void operator()(std::string ConversionSettings::*setting) const
    {
        const auto* const list = std::get_if<ComboControl Controls::*>(&option_.control);
        const std::string& text = list != nullptr
                                      ? (controls_.**list).Text()
                                      : (controls_.*std::get<TextControl Controls::*>(option_.control)).text;
        if (option_.reading != Reading::InTextMode)
            settings_.*setting = text;
        else if (textMode_)
            settings_.*setting = WithTabs(text);
    }

private:
    const Option& option_;
    const Controls& controls_;
    ConversionSettings& settings_;
    bool textMode_;
};

} // namespace

void ReadSettingsFromForm(const Controls& controls, ConversionSettings& settings,
                          const std::function<bool()>& rebuildTagMap)
{
    for (const Option& option : Options())
        std::visit(Reader(option, controls, settings), option.setting);
    settings.fromUrl = controls.FromUrl();
    // A preview does not make the folder.
    settings.blTextExport = settings.blPreview ? !settings.textFolder.empty() : FolderExists(settings.textFolder);
    // The map is rebuilt whether it is wanted or not: the mapping list shows it either way.
    const bool hasMappings = rebuildTagMap();
    settings.blEnableTagMapping = controls.chkEnableTagMapping.Checked() && hasMappings;
}

std::vector<std::string> TextExportWarnings(const ConversionSettings& settings, std::size_t sourceCount)
{
    std::vector<std::string> lines;
    if (!settings.blTextExport)
        return lines;
    if (settings.strDelimiter.empty())
        lines.emplace_back("No delimiter: all values of a line run together (delimiter= names one)");
    if (!settings.blAppend && sourceCount > 1)
        lines.emplace_back("Each source file replaces the text files of the one before (+append keeps them all)");
    return lines;
}

} // namespace velmora
