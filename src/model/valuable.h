#pragma once

#include <veldmap/model/bitfield.h>
#include <veldmap/model/element.h>

#include <memory>
#include <vector>

/// An element that holds one number: a hardware register, a software integer, a boolean, a pointer.
///
/// Owns its bitfields and bitgroups. The value is a cache of what a host last read from, or means to write to, the
/// target; it starts as 0. Text: headers/c_types.cpp, headers/bitfield_macros.cpp, headers/assembly.cpp,
/// docsite/pages.cpp, docsite/menu.cpp.
class VELDMAP_EXPORT VMValuable : public VMXMLElement {
public:
    VMValuable(const QString &name, bool readable, bool writable);
    /// Copies the fields, bitfields and bitgroups; the groups of the copy list the copy's fields. The names of the
    /// halves stay empty: they belong to the place where the description declares them.
    VMValuable(const VMValuable &source);
    ~VMValuable() override;

    static bool matches(const VMXMLElement &element) { return element.isValuable(); }

    int getAlignConstraint() const override;
    bool isValuable() const override;
    int dumpInfo(int level) const override;

    /// Gives each bitfield its place in a packed word, in list order from bit 0 without gaps, as number and as text.
    virtual void buildPhysicalMap();
    virtual int getSignedValue() const;
    /// The value, extended to 32 bits by the class's own signedness.
    virtual unsigned int getValue() const = 0;
    /// Stores the low bits of \a value in the class's own width.
    virtual void setValue(unsigned int value) = 0;
    /// \a cache with all bits of set and clear fields at 0, so that writing it back repeats no action.
    virtual unsigned int getValueForWritingBitfieldFromCache(unsigned int cache) const;
    virtual unsigned int getValueForWritingBitfield() const;
    virtual bool isSigned() const;

    /// Takes ownership of \a field, which is not null.
    void addBitField(VMBitField *field);
    /// Takes ownership of \a group.
    void addBitGroup(VMBitGroup *group);
    /// The first bitfield of that name, or null.
    VMBitField *getBitFieldByName(const QString &fieldName) const;
    /// The first bitgroup of that name, or null.
    VMBitGroup *getBitGroupByName(const QString &groupName) const;
    /// "r" or "-", then "w" or "-".
    QString getProtectString() const;
    /// The value as text, "?" when it can't be read.
    QString getValueString(DisplayType display) const;

    bool readable;
    bool writable;
    DisplayType displayType = DISPLAY_HEX;
    bool enumTemplate = false; ///< stands for an enum: generators print no structure and no macros for it
    std::vector<std::unique_ptr<VMBitField>> bitFields; ///< in document order
    std::vector<std::unique_ptr<VMBitGroup>> bitGroups; ///< in document order
    QString lowName;                                    ///< name of the lower half of a 16-bit or 32-bit register
    QString highName;                                   ///< name of the upper half
    QString physicalName;                               ///< expression of the top bit of the packed word

protected:
    /// dumpInfo for a class whose object takes \a objectSize bytes.
    int dumpValuable(int level, std::size_t objectSize) const;
};
