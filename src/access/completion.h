#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

class VMXMLElement;

/// One candidate of a completion list: what may stand next in a console.
class VELDMAP_EXPORT CXMLCompletionEntry {
public:
    enum CompletionEntryType {
        COMPLETION_OPERATION = 0, ///< an operation of the console
        COMPLETION_REGISTER32 = 1,
        COMPLETION_REGISTER16 = 2,
        COMPLETION_REGISTER8 = 3,
        COMPLETION_INTERNAL_REGISTER8 = 4,
        COMPLETION_BITFIELD = 5,
        COMPLETION_POINTER = 6,
        COMPLETION_INT32 = 7,
        COMPLETION_INT16 = 8,
        COMPLETION_INT8 = 9,
        COMPLETION_UNSIGNED_INT32 = 10,
        COMPLETION_UNSIGNED_INT16 = 11,
        COMPLETION_UNSIGNED_INT8 = 12,
        COMPLETION_BOOLEAN = 13,
        COMPLETION_STRUCT = 14,
        COMPLETION_ARRAY = 15,
        COMPLETION_NONE = 17
    };

    CXMLCompletionEntry() = default;
    CXMLCompletionEntry(QString name, QString arguments, QString result, QString help, CompletionEntryType type)
        : name(std::move(name)), arguments(std::move(arguments)), help(std::move(help)), result(std::move(result)),
          type(type)
    {
    }

    QString name;
    QString arguments; ///< names, comma-separated
    QString help;
    QString result; ///< the name of the result
    CompletionEntryType type = COMPLETION_NONE;
};

/// How \a element stands in the list of its holder: name, comment as help, and type. Empty, with the type
/// COMPLETION_NONE, for what is not offered there: holes, memories, bitfields, archives.
VELDMAP_EXPORT CXMLCompletionEntry getCompletionEntryFromElement(const VMXMLElement *element);
