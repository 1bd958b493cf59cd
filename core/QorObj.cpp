#include "QorObj.h"

const char* const TREE_ERR[11] = {
    "No Last Error.",
    "No Next Node !!",
    "No Parent Node !!",
    "No Child Node !!",
    "Insert Error! No Parent Node.",
    "Root CANNOT be Removed !",
    "No prev Node !!",
    "MOVETO out of range",
    "Reserved",
    "Reserved",
    "Unexpected Error.",
};
