#pragma once

#include "import/device.h"

#include <QString>

#include <memory>
#include <vector>

/// A description before it is text. Names and comments are as they will be written.
namespace veldmap::plan {

struct Option {
    QString name;
    QString comment;
    quint64 value = 0;
    chip::At at;

    bool operator==(const Option &other) const
    {
        return name == other.name && comment == other.comment && value == other.value;
    }
};

struct Field {
    QString name;
    QString comment;
    int lowest = 0;
    int width = 1;
    QString access;
    QString reset; ///< empty for none
    std::vector<Option> options;
    QString enumSource; ///< what the source calls the options
    QString linkedEnum; ///< that gives the options, once it is decided
    int cut = 0;        ///< bits of a piece, 0 for a whole field
    uint cutStart = 0;
    QString cutPrefix; ///< of the names of pieces
    QString path;      ///< in the source
    chip::At at;
};

/// What stands in a structure.
struct Member {
    enum class Kind { Register, Structure, Memory };

    Kind kind = Kind::Register;
    QString name;
    QString comment;
    quint64 offset = 0; ///< bytes from where the structure around begins
    quint32 count = 0;  ///< of an array, else 0
    quint64 step = 0;   ///< bytes from one to the next in an array
    quint64 bytes = 4;  ///< of one
    int alignment = 4;
    QString protect; ///< of a register
    std::vector<Field> fields;
    std::vector<Member> members; ///< of a structure
    bool isAlternate = false;    ///< the source calls it another view of something
    QString path;                ///< in the source
    chip::At at;

    // How an array came to be, if the source does not have it.
    QString prefix;            ///< of the names of its members, in front of their number
    QString suffix;            ///< and behind it
    std::vector<Member> parts; ///< what they were, in their order

    quint64 end() const { return offset + (count > 0 ? (count - 1) * step : 0) + bytes; }
};

struct Instance {
    QString name;
    quint64 address = 0;
    QString path;
    chip::At at;
};

struct Type {
    QString name;
    QString comment;
    QString category;
    bool isMemory = false; ///< a region of memory and no registers
    std::vector<Member> members;
    std::vector<Instance> instances;
    chip::At at;
};

} // namespace veldmap::plan
