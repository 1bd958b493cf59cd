#pragma once

#include "core/QorExport.h"

#include "qor/files.h"

/// A group file whose blocks are pictures in the QGB layout; its magic is a zero byte then "BGQ".
/// \note Copies get their own tables; everything else is copied member by member.
class QOR_API QorPicGroup : public QorDataGroup
{
public:
    /// The first four bytes of every picture group file.
    static constexpr char kMagic[4] = {'\0', 'B', 'G', 'Q'};

    QorPicGroup();
    QorPicGroup(const QorPicGroup& other) = default;
    QorPicGroup& operator=(const QorPicGroup& other) = default;
};
