#include "cells/NimbraColorPickerTableCell.h"

NIM_REGISTER_CLASS(NimbraColorPickerTableCell, PSTableCell);
