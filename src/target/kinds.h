#pragma once

#include "target/target.h"

#include <QtGlobal>

class VMMemoryMap;

namespace veldmap {

/// The kinds of targets, and what they share. A kind is a source of its own with one function that makes it of its
/// words.

/// A target that knows which addresses may lie in it.
class PlacedTarget : public Target {
public:
    /// The first address, and the one behind the last: all of them where the target alone knows.
    virtual qint64 begin() const { return 0; }
    virtual qint64 end() const { return Q_INT64_C(1) << 32; }
};

/// What a word of the command line asks for.
struct TargetWord {
    QString word;    ///< KIND:DETAILS, as messages quote it
    QString details; ///< what stands behind the kind
    const VMMemoryMap &map;
    Sink &sink;
};

/// The target that \a word names, not yet connected. Null, with a finding, when the details make no sense or what they
/// name can't be opened.
std::unique_ptr<PlacedTarget> makeImageTarget(const TargetWord &word);
std::unique_ptr<PlacedTarget> makeSimulatedTarget(const TargetWord &word);
std::unique_ptr<PlacedTarget> makeGdbTarget(const TargetWord &word);
std::unique_ptr<PlacedTarget> makeMappedTarget(const TargetWord &word);
std::unique_ptr<PlacedTarget> makeProgramTarget(const TargetWord &word);

/// Tells why \a word names no target; null.
std::nullptr_t refuse(const TargetWord &word, const QString &reason);

/// The details \a text of the form PLACE@ADDRESS; the place is all of it where no "@" stands, and the address is then
/// \a otherwise. Nothing when the address is none.
struct PlaceAndAddress {
    QString place;
    quint32 address;
};
std::optional<PlaceAndAddress> placeAndAddress(const QString &text, std::optional<quint32> otherwise);

/// The answer of a target that holds nothing there, and of one that is silent.
inline TargetAnswer notHere(const QString &reason)
{
    return {TargetAnswer::NotHere, reason};
}
inline TargetAnswer noAnswer(const QString &reason)
{
    return {TargetAnswer::NoAnswer, reason};
}

/// The number that the \a width bytes at \a bytes are, in the byte order of this machine, and the other way round.
quint32 numberFrom(const std::byte *bytes, int width);
void storeNumber(quint32 value, std::byte *bytes, int width);

} // namespace veldmap
