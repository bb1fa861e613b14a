#include "platform/PSTableCell.h"

NIM_REGISTER_CLASS(PSTableCell, UIView);
NIM_REGISTER_CLASS(PSSwitchTableCell, PSTableCell);

void PSTableCell::initWithSpecifier(const std::shared_ptr<PSSpecifier>& specifier, int style)
{
    _specifier = specifier;
    _style = style;
    if (specifier)
        _titleLabel.text = specifier->name();
}
