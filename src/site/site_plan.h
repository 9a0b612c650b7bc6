#pragma once

#include "site/page_names.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <vector>

class VMEnum;
class VMMemoryMap;
class VMRootArchive;
class VMXMLArchive;
class VMXMLElement;

namespace veldmap {

struct SourcePlace;

/// One instance, and where the site shows it.
struct SiteInstance {
    const VMXMLElement *element;
    bool isChip;
    qsizetype type; ///< in SitePlan::types
    QString file;   ///< UART0.html
    QByteArray id;  ///< of its chapter where one page holds all
};

/// One type of structures or registers.
struct SiteType {
    const VMXMLElement *element;
    const VMXMLArchive *archive;
    bool isChip;
    bool hasAsm = false;             ///< its addresses stand in an assembly header
    QString file = {};               ///< of its page; of the instance's, if there is exactly one
    QByteArray id = {};              ///< of its chapter where one page holds all
    bool hasPage = false;            ///< of its own
    QList<qsizetype> instances = {}; ///< in SitePlan::instances
    QList<qsizetype> users = {};     ///< types that have members of this one
};

/// A description file, with what it declares beside types.
struct SiteArchive {
    const VMXMLArchive *archive;
    bool isChip;
};

/// What a site consists of: its pages, their names, and what leads where. Made once, before the pages; it reads the
/// tree of \a map, which must outlive it and stay as it is, and any number of threads may ask it.
class SitePlan {
public:
    explicit SitePlan(const VMMemoryMap &map);

    const QString &title() const { return m_title; }
    /// The comment of the chip's first file, or else of the software's.
    const QString &comment() const { return m_comment; }
    bool hasBothRoots() const { return m_hasBothRoots; }

    const std::vector<SiteInstance> &instances() const { return m_instances; } ///< by address
    const std::vector<SiteType> &types() const { return m_types; }
    const std::vector<SiteArchive> &archives() const { return m_archives; }
    bool hasEnums() const { return m_hasEnums; }
    bool hasVariables() const { return m_hasVariables; }

    /// The type of that name, null when there is none.
    const SiteType *typeNamed(const QString &name, bool isChip) const;
    /// The file of \a place below the root of its description; empty for no place.
    QString fileOf(const SourcePlace &place) const;

private:
    void addRoot(const VMRootArchive &root, bool isChip);
    void addTypes(const VMRootArchive &root, bool isChip);
    void addInstances(const VMRootArchive &root, bool isChip);
    void findUsers();
    void sortInstances();
    void namePages();
    QHash<QString, qsizetype> &typesNamed(bool isChip) { return m_typesNamed[isChip ? 0 : 1]; }

    QString m_title;
    QString m_comment;
    bool m_hasBothRoots = false;
    bool m_hasEnums = false;
    bool m_hasVariables = false;
    std::vector<SiteInstance> m_instances;
    std::vector<SiteType> m_types;
    std::vector<SiteArchive> m_archives;
    QHash<QString, qsizetype> m_typesNamed[2]; ///< of the chip, of the software
    QHash<QString, QString> m_relativeFiles;   ///< by the name in places
};

} // namespace veldmap
