#pragma once

#include <veldmap/model/valuable.h>

#include <type_traits>

/// The type word of the built-in scalar \a type: "Reg32", "uint8", ...
VELDMAP_EXPORT QString scalarTypeWord(VMXMLElement::XMLElementType type);

/// What the scalars share: a value of the width and signedness of Storage. A typedef's name takes the place of the
/// built-in type word.
template <typename Word>
class VMScalar : public VMValuable {
public:
    using Storage = Word;

    int sizeOf() const override { return static_cast<int>(sizeof(Storage)); }
    QString getTypeString() const override { return typedefName.isEmpty() ? scalarTypeWord(type) : typedefName; }
    unsigned int getValue() const override { return static_cast<unsigned int>(m_value); }
    int dumpInfo(int level) const override { return dumpValuable(level, sizeof(*this)); }
    void setValue(unsigned int value) override { m_value = static_cast<Storage>(value); }
    bool isSigned() const override { return std::is_signed_v<Storage>; }

protected:
    VMScalar(const QString &name, bool readable, bool writable, XMLElementType tag, DisplayType display)
        : VMValuable(name, readable, writable)
    {
        type = tag;
        displayType = display;
    }

private:
    Storage m_value = 0;
};

// Hardware registers: the description says whether they can be read and written.

class VELDMAP_EXPORT VMRegister32 : public VMScalar<std::uint32_t> {
public:
    VMRegister32(const QString &name, bool readable, bool writable)
        : VMScalar(name, readable, writable, XML_REGISTER32, DISPLAY_HEX)
    {
    }
};

class VELDMAP_EXPORT VMRegister16 : public VMScalar<std::uint16_t> {
public:
    VMRegister16(const QString &name, bool readable, bool writable)
        : VMScalar(name, readable, writable, XML_REGISTER16, DISPLAY_HEX)
    {
    }
};

class VELDMAP_EXPORT VMRegister8 : public VMScalar<std::uint8_t> {
public:
    VMRegister8(const QString &name, bool readable, bool writable)
        : VMScalar(name, readable, writable, XML_REGISTER8, DISPLAY_HEX)
    {
    }
};

/// An 8-bit register that is reached through another bus than the memory's.
class VELDMAP_EXPORT VMInternalRegister8 : public VMRegister8 {
public:
    VMInternalRegister8(const QString &name, bool readable, bool writable) : VMRegister8(name, readable, writable)
    {
        type = XML_INTERNAL_REGISTER8;
    }
};

// Software integers: always readable and writable.

class VELDMAP_EXPORT VMInt32 : public VMScalar<std::int32_t> {
public:
    explicit VMInt32(const QString &name) : VMScalar(name, true, true, XML_INT32, DISPLAY_DEC) {}
};

class VELDMAP_EXPORT VMInt16 : public VMScalar<std::int16_t> {
public:
    explicit VMInt16(const QString &name) : VMScalar(name, true, true, XML_INT16, DISPLAY_DEC) {}
};

class VELDMAP_EXPORT VMInt8 : public VMScalar<std::int8_t> {
public:
    explicit VMInt8(const QString &name) : VMScalar(name, true, true, XML_INT8, DISPLAY_DEC) {}
};

class VELDMAP_EXPORT VMUnsignedInt32 : public VMScalar<std::uint32_t> {
public:
    explicit VMUnsignedInt32(const QString &name) : VMScalar(name, true, true, XML_UNSIGNED_INT32, DISPLAY_DEC) {}
};

class VELDMAP_EXPORT VMUnsignedInt16 : public VMScalar<std::uint16_t> {
public:
    explicit VMUnsignedInt16(const QString &name) : VMScalar(name, true, true, XML_UNSIGNED_INT16, DISPLAY_DEC) {}
};

class VELDMAP_EXPORT VMUnsignedInt8 : public VMScalar<std::uint8_t> {
public:
    explicit VMUnsignedInt8(const QString &name) : VMScalar(name, true, true, XML_UNSIGNED_INT8, DISPLAY_DEC) {}
};

class VELDMAP_EXPORT VMBoolean : public VMUnsignedInt8 {
public:
    explicit VMBoolean(const QString &name) : VMUnsignedInt8(name) { type = XML_BOOLEAN; }
};

/// A word of unknown meaning, as it stands behind a void pointer.
class VELDMAP_EXPORT VMVoid : public VMUnsignedInt32 {
public:
    explicit VMVoid(const QString &name) : VMUnsignedInt32(name)
    {
        type = XML_VOID;
        displayType = DISPLAY_HEX;
    }
};
