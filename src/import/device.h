#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

/// What a vendor's file says of a chip, whatever its format: readers make it, and writeDescription() writes the
/// description. All that the format inherits or derives is resolved already, so whoever reads these structures needs no
/// other place of the file. What a reader could not take over it has told to its sink.
namespace veldmap::chip {

/// A place in the source file, as Place counts.
struct At {
    int line = 0;
    int column = 0;
};

enum class Access { ReadWrite, ReadOnly, WriteOnly, WriteOnce, ReadWriteOnce, None };

/// What becomes of the bits of a field when a program writes them.
enum class OnWrite { Modify, OneToClear, OneToSet, OneToToggle, ZeroToClear, ZeroToSet, ZeroToToggle, Clear, Set };

/// What reading does beside giving the value.
enum class OnRead { Nothing, Clear, Set, Modify, ModifyExternal };

/// How often something stands there. A name of several has one "%s" where the index belongs, or none when it is an
/// array in the source too, whose members are counted from 0.
struct Repeat {
    quint32 count = 1;
    quint64 step = 0;    ///< from one to the next, in bytes; of fields in bits
    QStringList indices; ///< as many as count where the name has "%s", else empty
    bool isArray = false;
};

struct Option {
    QString name;
    QString comment;
    quint64 value = 0;
    quint64 dontCare = 0;   ///< the bits of value that may be anything
    bool isDefault = false; ///< it stands for all values that no other names; value says nothing
    At at;
};

/// Names for values of a field.
struct Enumeration {
    enum class Use { Both, Read, Write };

    QString name; ///< empty where the source has none
    Use use = Use::Both;
    std::vector<Option> options;
    At at;
};

struct Field {
    QString name;
    QString comment;
    int lowest = 0; ///< bit of the register
    int width = 1;
    Access access = Access::ReadWrite;
    OnWrite onWrite = OnWrite::Modify;
    OnRead onRead = OnRead::Nothing;
    Repeat repeat;
    std::vector<std::shared_ptr<const Enumeration>> enumerations; ///< at most one for each use; shared by equal fields
    std::optional<quint64> reset = {};                            ///< where the format gives it to fields
    At at;
};

/// A register, or several with others in a cluster.
struct Part {
    bool isCluster = false;
    QString name;
    QString comment;
    quint64 offset = 0; ///< bytes from where its parent begins
    Repeat repeat;
    QString alternateOf;     ///< name of the register or cluster that it is another view of
    std::vector<Part> parts; ///< of a cluster
    QString typeName;        ///< of a cluster, where the source names its structure
    At at;

    // of a register
    int size = 32; ///< in bits
    Access access = Access::ReadWrite;
    OnWrite onWrite = OnWrite::Modify;
    OnRead onRead = OnRead::Nothing;
    std::optional<quint64> reset;
    quint64 resetMask = ~quint64(0); ///< the bits of reset that are known
    std::vector<Field> fields;
    std::optional<quint64> memoryBytes; ///< it is no register but a block of so many bytes
};

struct AddressBlock {
    quint64 offset = 0;
    quint64 size = 0; ///< in bytes
    QString usage;    ///< "registers", "buffer", "reserved" or "memory"
    At at;
};

struct Interrupt {
    QString name;
    QString comment;
    qint64 number = 0;
    At at;
};

struct Peripheral {
    QString name;
    QString comment;
    QString group;    ///< of peripherals, empty for none
    QString typeName; ///< where the source names the structure of its registers
    QString alternateOf;
    QString prefix; ///< in front of the names of all registers in headers of the source's own tools
    QString suffix;
    quint64 address = 0;
    std::vector<AddressBlock> blocks;
    std::vector<Interrupt> interrupts;
    std::shared_ptr<const std::vector<Part>>
        parts; ///< never null; the same object for those that are derived as a whole
    At at;
};

struct Device {
    QString file; ///< that it was read from, as messages name it
    QString name;
    QString comment;
    QString vendor;
    QString version;
    std::vector<Peripheral> peripherals;
    At at;
};

} // namespace veldmap::chip
