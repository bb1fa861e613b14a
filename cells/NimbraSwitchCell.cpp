#include "cells/NimbraSwitchCell.h"

NIM_REGISTER_CLASS(NimbraSwitchCell, PSSwitchTableCell);
NIM_REGISTER_CLASS(NimbraSwitchCellWithSubtitle, NimbraSwitchCell);

void NimbraSwitchCell::initWithSpecifier(const std::shared_ptr<PSSpecifier>& specifier, int style)
{
    PSSwitchTableCell::initWithSpecifier(specifier, style);
    titleLabel().numberOfLines = 0;
    titleLabel().wordWrapping = true;
}

void NimbraSwitchCellWithSubtitle::initWithSpecifier(const std::shared_ptr<PSSpecifier>& specifier, int style)
{
    (void)style;
    NimbraSwitchCell::initWithSpecifier(specifier, 3);
    detailTextLabel().text = specifier ? specifier->propertyForKey("subtitle").stringValue() : std::string();
    detailTextLabel().leftAligned = true;
    detailTextLabel().numberOfLines = 0;
}
