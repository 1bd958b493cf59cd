#include "QorSndGroup.h"

QorSndGroup::QorSndGroup() : QorDataGroup(kMagic) {}
