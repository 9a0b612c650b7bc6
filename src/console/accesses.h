#pragma once

#include <QString>

class VMValuable;
class VMXMLElement;

namespace veldmap {

class ConsoleState;
struct Rule;
struct TargetAnswer;

/// The accesses of a session to its target, as its settings have them. Whether the description allows an access is for
/// the caller to say. What fails is told, and false.
class Accesses {
public:
    explicit Accesses(ConsoleState &state) : m_state(state) {}

    /// Reads \a valuable into its cache in one access, behind the pointers that lead to it. Its read error tells
    /// afterwards whether that was possible.
    bool read(VMValuable &valuable);
    /// Reads all that \a element holds and that can be read, side by side in as few accesses as that allows.
    bool readAll(VMXMLElement &element);
    /// Writes \a value to \a valuable in one access and, where the settings and the access allow it, reads it back.
    bool write(VMValuable &valuable, quint32 value);
    /// Reads the pointers by which \a element is reached, so that it has its address.
    bool followPointersTo(const VMXMLElement &element);
    /// Whether there is a target; else that is told.
    bool hasTarget();
    /// Tells why \a what could not be done with \a path, by \a rule.
    bool fail(const Rule &rule, const QString &path, const TargetAnswer &answer);
    /// Whether the last access that failed did so since the target did not answer: others would fail alike.
    bool isSilent() const { return m_isSilent; }

private:
    QString reasonOf(const TargetAnswer &answer) const;
    bool verify(VMValuable &valuable, quint32 written);

    ConsoleState &m_state;
    bool m_isSilent = false;
};

} // namespace veldmap
