#pragma once

#include "site/page_names.h"

#include <QByteArray>
#include <QString>

#include <vector>

class VMArray;
class VMBitField;
class VMValuable;
class VMXMLElement;

namespace veldmap {

/// How often an element of a page stands in its place, and how far its copies lie apart.
struct Repetition {
    qint64 count;
    quint32 stride;          ///< bytes
    QString countExpression; ///< as written
    char letter;             ///< that stands for the index, "n" for the outermost
};

/// What a page shows at one place: a register or integer, a memory, a gap, or the begin of a structure, whose members
/// follow one level deeper. An array is shown once, as the element that it repeats.
struct PageRow {
    const VMXMLElement *element = nullptr; ///< of an array what is repeated
    const VMArray *array = nullptr;        ///< the outermost, if it is one
    int level = 0;                         ///< 0 for a member of the page's element
    QString name;                          ///< of the array where it is one
    QByteArray id;                         ///< dma.chan[n].ctrl; empty for a gap
    std::vector<QByteArray> fieldIds;      ///< of a register's fields, in order
    quint32 offset = 0;                    ///< from the page's element, with all indices 0
    std::vector<Repetition> repetitions;   ///< of the structures around it and its own, the outermost first
    std::size_t repeatedAround = 0;        ///< how many of them are not its own
    QString path;                          ///< dma.chan[n].ctrl as descriptions have it
    QByteArray asmName;                    ///< of its address in an assembly header: UART0_CHAN_{n}

    bool isRepeated() const { return repetitions.size() > repeatedAround; }
};

using PageRows = std::vector<PageRow>;

/// The rows of \a element, an instance or a type, in document order. A scalar has one row, itself. Ids are unique among
/// those of \a ids and begin with \a idPrefix, if it is not empty. Names for assembly are made where \a hasAsm says so.
PageRows rowsOf(const VMXMLElement &element, const QByteArray &idPrefix, PageIds &ids, bool hasAsm);

/// The words for who may read and write: "read and write", "read, write 1 to clear".
QLatin1StringView accessWords(const VMBitField &field);
QLatin1StringView accessWords(const VMValuable &valuable);

/// The comment of \a field as the description wrote it, without the table of its options that a load appends.
QString ownComment(const VMBitField &field);

/// The reset value that the fields of a register give it: "0x00000004", with "x" for a digit that no field fixes;
/// empty when no field has one.
QByteArray resetText(const VMValuable &valuable);

} // namespace veldmap
