// Names that DPX and Cineon share.
#pragma once

// Image orientation, indexed by code.
inline constexpr const char *table_orientation[] = {
    "",
    "right->left / top->bottom",
    "left->right / bottom->top",
    "right->left / bottom->top",
    "top->bottom / left->right",
    "top->bottom / right->left ",
    "bottom->top / left->right",
    "bottom->top / right->left ",
};
