#pragma once
// A row that always shows its reorder handle (the rearrangement pages).

#include "platform/PSTableCell.h"

class NimbraMovableCell : public PSTableCell {
public:
    /// Every layout pass shows the reorder control and puts the cell in editing mode.
    void layoutSubviews() override;
};
