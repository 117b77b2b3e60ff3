#include "settings/controls.h"

#include "settings/options.h"

namespace velmora {

namespace {

struct Start {
    const Option& option;
    Controls& controls;

    void operator()(CheckControl Controls::*member) const
    {
        (controls.*member).value = option.startsOn ? CheckState::Checked : CheckState::Unchecked;
    }
    void operator()(TextControl Controls::*member) const { (controls.*member).text = option.startText; }
    void operator()(ComboControl Controls::*member) const { (controls.*member).selected = 0; }
};

} // namespace

Controls::Controls()
{
    for (const Option& option : Options())
        std::visit(Start{option, *this}, option.control);
}

void Controls::UpdateEnabled()
{
    for (const Option& option : Options())
        if (option.enabledIf != nullptr)
            std::visit([&](auto member) { (this->*member).enabled = option.enabledIf(*this); }, option.control);
}

} // namespace velmora
