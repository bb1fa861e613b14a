#pragma once
// Marks a colour row in a page definition ("cell" PSLinkCell, "cellClass" NimbraColorPickerTableCell).
// It has no behaviour: the colour-picker fix-up replaces every such row with one for the installed
// colour-picker library.

#include "platform/PSTableCell.h"

class NimbraColorPickerTableCell : public PSTableCell {};
