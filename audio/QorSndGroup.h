#pragma once

#include "core/QorExport.h"

#include "qor/files.h"

/// A group file whose blocks are sounds in the QSG layout; its magic is the four characters "QSG ".
/// \note Copies get their own tables; everything else is copied member by member.
class QOR_API QorSndGroup : public QorDataGroup
{
public:
    /// The first four bytes of every sound group file.
    static constexpr char kMagic[4] = {'Q', 'S', 'G', ' '};

    QorSndGroup();
    QorSndGroup(const QorSndGroup& other) = default;
    QorSndGroup& operator=(const QorSndGroup& other) = default;
};
