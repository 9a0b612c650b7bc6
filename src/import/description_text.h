#pragma once

#include "import/description_writer.h"
#include "import/plan.h"
#include "import/shared_enums.h"

#include <QHash>

namespace veldmap {

/// The file with the numbers of interrupts, which only programs use.
inline const QString kInterruptsFile = QStringLiteral("common/interrupts.xml");

/// Writes one file of a description.
class DescriptionText {
public:
    explicit DescriptionText(const QString &path, const QString &allowed = {});

    /// A line \a level tags deep that tells of \a at.
    void line(int level, const QString &text, const chip::At &at = {});
    void comment(int level, const QString &markup, const chip::At &at = {});
    /// What a note of the document allows of what follows.
    void allow(int level, const QString &rules);
    /// The files that are included, named from this one.
    void includes(const QStringList &files);
    void enumeration(const SharedEnum &shared);
    void variable(const QString &name, const QString &value, const QString &comment, const chip::At &at = {});
    /// \a counts has the variables for counts of arrays.
    void module(const plan::Type &type, const QHash<quint32, QString> &counts);
    WrittenFile finish();

private:
    void members(const std::vector<plan::Member> &members, int level, const QHash<quint32, QString> &counts,
                 quint64 end);
    void member(const plan::Member &member, int level, const QHash<quint32, QString> &counts);
    void field(const plan::Field &field, int level);
    void options(const plan::Field &field, int level);
    /// A gap \a at an offset, in C of units of no more than \a unit bytes.
    void hole(quint64 bytes, quint64 at, int unit, int level);
    /// A tag with nothing but a comment inside, on one line if it fits there.
    void tag(int level, const QString &name, const QString &attributes, const QString &markup, const chip::At &at);

    WrittenFile m_file;
};

} // namespace veldmap
