#pragma once

#include <veldmap/veldmap_export.h>

#include <cstdint>
#include <string>

/// The values that expressions compute with.
namespace variant {

/// One value of the expression engine: nothing, a truth value, a number, a text, some bytes or a foreign pointer.
///
/// Owns its text and its bytes; copies are deep, and a Ptr is only carried along. Integers are 32 bits wide, also where
/// a signature says unsigned long, of which the low 32 bits count. Arithmetic wraps at 32 bits.
/// Operations and converting readers return 1 for success and 0 for failure. A failure writes nothing, and neither
/// throws nor reports anything. The result of an operation may be one of its operands.
class VELDMAP_EXPORT Variant {
public:
    /// The type codes, in the order of the letters of \c m_cTypeChar.
    enum Type : std::int32_t { kNull, kBool, kInt, kDWord, kReal, kString, kBinary, kPtr };

    /// One letter for each type code; the signatures of functions and operators are written with them.
    static const char *const m_cTypeChar;

    /// A Null value.
    Variant();
    Variant(const Variant &other) = default;
    /// Takes the payload over and leaves \a other Null.
    Variant(Variant &&other) noexcept;
    virtual ~Variant();

    Variant &operator=(const Variant &other) = default;
    /// Takes the payload over and leaves \a other Null.
    Variant &operator=(Variant &&other) noexcept;

    Type getType() const { return m_type; }
    /// The letter of the type.
    char getTypeChar() const { return m_cTypeChar[m_type]; }
    /// Bytes of the payload: 4, or 8 for a Real; the terminator of a text counts; 0 for Null and for a text or bytes
    /// that are not there.
    int getSize() const { return m_size; }

    /// Drops the text of a String or the bytes of a Binary and keeps the type; other values stay as they are.
    void free();

    void setNull();
    /// Any \a value but 0 is true; it is kept as it is.
    void setBool(int value);
    void setInt(int value);
    void setDWORD(unsigned long value);
    void setReal(double value);
    /// The pointer stays with the caller.
    void setPtr(void *value);
    /// Copies \a text, which may be this value's own. Null makes a String without text, unlike the empty text.
    void setString(const char *text);
    /// Takes \a text over up to its first NUL.
    void setString(std::string &&text);
    /// Copies \a size bytes, which may be this value's own. A \a size below 1 makes a Binary without bytes.
    void setBinary(const void *bytes, int size);

    /// These seven never convert: a value of any other type gives 0 or null.
    int getBool() const;
    int getInt() const;
    unsigned long getDWORD() const;
    double getReal() const;
    /// Valid until the value changes; null for a String without text.
    const char *getString() const;
    /// Valid until the value changes; null for a Binary without bytes.
    const void *getBinary() const;
    void *getPtr() const;

    /// Copies at most \a maximum bytes of a Bool, Int, DWORD, Real or Ptr and returns their number. Null, String and
    /// Binary copy nothing and give 0; their payload is reached through the getters.
    int getData(void *destination, int maximum) const;

    /// A Real is rounded down; one outside the signed range, or not a number, gives -2147483648.
    int asInt(int &out) const;
    /// A Real is rounded down to 64 bits, whose low 32 count; one outside that range, or not a number, gives 0.
    int asDWORD(unsigned long &out) const;
    int asReal(double &out) const;
    /// Not-a-number is true.
    int asBool(int &out) const;

    /// Replaces \a out by the value as text; always succeeds. \a format is a printf format that replaces the default
    /// one of an Int ("%d", takes an int), DWORD ("%lu", takes an unsigned long), Real ("%.4lf", takes a double) or
    /// Binary ("%02X", takes an unsigned for each byte). The caller vouches that it fits.
    int asString(std::string &out, const char *format = nullptr) const;

    /// Turns the value into the String of its text followed by \a text. Null changes nothing.
    void appendToString(const char *text);
    /// The same with the character in the low 8 bits of \a character. 0 changes nothing.
    void appendToString(int character);

    // Arithmetic works on Bool, Int, DWORD and Real and gives the wider type of the two operands, Bool with Bool an
    // Int. Text, bytes, pointers and Null fail.
    static int MUL(const Variant &left, const Variant &right, Variant &result);
    /// Fails for a divisor of 0, a Real nearer to 0 than 1e-12, or a Bool. The left type decides between signed and
    /// unsigned; a Bool is divided as a Real.
    static int DIV(const Variant &left, const Variant &right, Variant &result);
    /// Int and DWORD only; the left type decides between signed and unsigned. Fails for a divisor of 0.
    static int MOD(const Variant &left, const Variant &right, Variant &result);
    static int ADD(const Variant &left, const Variant &right, Variant &result);
    static int SUB(const Variant &left, const Variant &right, Variant &result);

    /// Int and DWORD only; the low 5 bits of the count are used, and the left type is the result's.
    static int BITLEFT(const Variant &left, const Variant &right, Variant &result);
    /// As BITLEFT; an Int keeps its sign.
    static int BITRIGHT(const Variant &left, const Variant &right, Variant &result);

    // Comparisons give a Bool and fail where compare() does.
    static int LT(const Variant &left, const Variant &right, Variant &result);
    static int GT(const Variant &left, const Variant &right, Variant &result);
    static int LE(const Variant &left, const Variant &right, Variant &result);
    static int GE(const Variant &left, const Variant &right, Variant &result);
    static int EQ(const Variant &left, const Variant &right, Variant &result);
    static int NE(const Variant &left, const Variant &right, Variant &result);

    // Bit operations take Int and DWORD only; two Ints give an Int, any other pair a DWORD.
    static int BITAND(const Variant &left, const Variant &right, Variant &result);
    static int BITXOR(const Variant &left, const Variant &right, Variant &result);
    static int BITOR(const Variant &left, const Variant &right, Variant &result);

    // Logical operations take whatever asBool() reads and give a Bool.
    static int LOGAND(const Variant &left, const Variant &right, Variant &result);
    static int LOGOR(const Variant &left, const Variant &right, Variant &result);

    /// Writes a negative number, 0 or a positive number to \a out when \a left is less than, equal to or greater than
    /// \a right. A String compares with a String only, byte by byte; not-a-number equals every number.
    static int compare(const Variant &left, const Variant &right, int &out);

private:
    union Payload {
        std::int32_t number;
        std::uint32_t word;
        double real;
        void *pointer;
    };

    void become(Type type, std::int32_t size);

    Type m_type = kNull;
    std::int32_t m_size = 0;
    Payload m_data{};
    std::string m_bytes; // the text of a String or the bytes of a Binary, else empty
};

} // namespace variant
