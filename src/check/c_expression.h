#pragma once

#include <QString>

#include <functional>
#include <optional>

/// What C makes of the text of an expression, which headers print as it stands.
namespace veldmap {

/// A value in C, or why there is none.
struct CValue {
    enum class Status {
        Value,
        Undefined, ///< a shift by the width or more, or a division by zero
        NoNumber,  ///< a digit that an octal number has not, as in 08
        Unreadable ///< what only a compiler could tell, such as a call or a fraction
    };
    Status status = Status::Unreadable;
    bool isUnsigned = false; ///< the value is then its 64 bits without a sign
    qint64 value = 0;

    /// As a finding shows it.
    QString text() const;
};

/// The widths with which C computes.
enum class CArithmetic {
    Int,   ///< of 32 bits, as long as the literals fit
    Widest ///< of 64 bits, as behind #if
};

/// The value of a name, or nothing when it is not known.
using CNames = std::function<std::optional<qint32>(QStringView name)>;

/// The value of \a expression with the precedence and the arithmetic of C. Values that overflow wrap.
CValue evaluateInC(QStringView expression, const CNames &names, CArithmetic arithmetic);

} // namespace veldmap
