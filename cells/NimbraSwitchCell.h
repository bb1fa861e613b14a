#pragma once
// Switch rows whose titles wrap onto as many lines as they need; the subtitle variant adds a
// second, left-aligned line from the row's "subtitle".

#include "platform/PSTableCell.h"

class NimbraSwitchCell : public PSSwitchTableCell {
public:
    void initWithSpecifier(const std::shared_ptr<PSSpecifier>& specifier, int style) override;
};

class NimbraSwitchCellWithSubtitle : public NimbraSwitchCell {
public:
    /// Always the subtitle style (3), whatever style was asked for.
    void initWithSpecifier(const std::shared_ptr<PSSpecifier>& specifier, int style) override;
};
