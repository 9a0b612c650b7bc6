#pragma once

#include "loading/archive_loader.h"
#include "loading/tag.h"

/// A tag that makes a member of a structure, and the places besides a struct where it may stand.
struct VMArchiveLoader::MemberTagRow {
    using Read = VMXMLElement *(VMArchiveLoader::*)(const veldmap::Tag &, VMXMLArchive *, const QString &);

    QLatin1StringView tag;
    Read read; ///< null for a valuable
    bool isValuable;
    bool inModule;
    bool inAlias;
};
