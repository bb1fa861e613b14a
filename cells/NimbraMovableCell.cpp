#include "cells/NimbraMovableCell.h"

NIM_REGISTER_CLASS(NimbraMovableCell, PSTableCell);

void NimbraMovableCell::layoutSubviews()
{
    PSTableCell::layoutSubviews();
    setShowsReorderControl(true);
    setEditing(true);
}
