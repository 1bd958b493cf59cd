#include "QorPicGroup.h"

QorPicGroup::QorPicGroup() : QorDataGroup(kMagic) {}
