#pragma once

#include "export/export_names.h"
#include "export/map_walk.h"

#include <vector>

namespace veldmap {

/// What the formats share that nest groups of registers as the tree does: names that are legal and stand once in their
/// scope, groups that are opened only when something is in them, and findings on what none of them can say.
class NestedExport : public MapListener {
public:
    bool beginGroup(const MapPlace &group) final;
    void endGroup(const MapPlace &group) final;
    void takeRegister(const MapPlace &place, const VMValuable &valuable) final;

protected:
    NestedExport(QLatin1StringView format, ExportFindings &findings);

    /// Learns of \a root what its instances don't know.
    void learn(const VMRootArchive &root) { m_halves.take(root); }
    /// Begins the scope of what a block holds, or ends it.
    void beginScope();
    void endScope();
    /// Opens the groups around what is to be written next.
    void openPending();

    virtual void openGroup(const MapPlace &group, const QString &name) = 0;
    virtual void closeGroup() = 0;
    /// Writes the register \a valuable, which can be reached as \a access says.
    virtual void writeRegister(const MapPlace &place, const QString &name, const VMValuable &valuable,
                               const MapAccess &access, const std::vector<MapField> &fields) = 0;
    /// Whether a register of another bus is written all the same, told with what becomes of it.
    virtual bool takesOtherBus() const { return true; }
    /// Tells what the format can't say of the type of \a valuable.
    virtual void tellLossesOfType(const MapPlace &place, const VMValuable &valuable);

    /// The name of \a place in the scope around it.
    QString nameOf(const MapPlace &place) { return m_scopes.back().take(place.name, place.declared.source); }
    NameScope newScope() { return NameScope(m_format, m_findings); }
    void tell(const Rule &rule, const SourcePlace &place, const QStringList &arguments)
    {
        m_findings.add(rule, place, arguments);
    }
    bool isInGroup() const { return !m_groups.empty(); }
    QString format() const { return m_format; }
    ExportFindings &findings() { return m_findings; }

private:
    void tellLosses(const MapPlace &place, const VMValuable &valuable);

    QLatin1StringView m_format;
    ExportFindings &m_findings;
    HalfNames m_halves;
    std::vector<NameScope> m_scopes;
    std::vector<const MapPlace *> m_groups; // around what is told now
    std::size_t m_opened = 0;               // how many of them are open
};

/// The fields of \a fields that share no bit with one before, unless one can only be read and the other only be
/// written; the others are told.
std::vector<MapField> withoutOverlaps(std::vector<MapField> fields, QLatin1StringView format, ExportFindings &findings);

/// The access of a register, or if it has none that of its fields together.
MapAccess accessOf(const VMValuable &valuable, const std::vector<MapField> &fields);

} // namespace veldmap
