#include "import/source_format.h"

#include "findings/finding.h"
#include "import/ipxact_reader.h"
#include "import/rules.h"
#include "import/svd_reader.h"
#include "xml/tag_document.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr SourceFormat kFormats[] = {
    {"CMSIS-SVD"_L1, "device"_L1, false, readSvd},
    {"IP-XACT"_L1, "component"_L1, true, readIpxact},
};

/// The name of the first tag in \a bytes without its prefix; empty when there is none. Passes over what may stand in
/// front of it.
QByteArrayView rootNameOf(QByteArrayView bytes)
{
    qsizetype at = 0;
    while ((at = bytes.indexOf('<', at)) >= 0 && at + 1 < bytes.size()) {
        const QByteArrayView rest = bytes.sliced(at);
        if (rest.startsWith("<!--")) {
            at = bytes.indexOf("-->", at + 4);
        } else if (rest[1] == '?' || rest[1] == '!') {
            at = bytes.indexOf('>', at);
        } else {
            qsizetype end = 1;
            while (end < rest.size() && !std::strchr(" \t\r\n/>", rest[end]))
                ++end;
            const QByteArrayView name = rest.sliced(1, end - 1);
            return name.sliced(name.lastIndexOf(':') + 1);
        }
        if (at < 0)
            break;
    }
    return {};
}

/// \a bytes without prefixes in the first tag, which the fast reader of documents leaves to the other one: underscores
/// are in the place of colons. Only names are in question, so values may change too.
QByteArray withoutPrefixes(QByteArray bytes)
{
    const QByteArrayView name = rootNameOf(bytes);
    if (name.isEmpty())
        return bytes;
    for (qsizetype at = name.data() + name.size() - bytes.constData(); at < bytes.size() && bytes[at] != '>'; ++at) {
        if (bytes[at] == ':')
            bytes[at] = '_';
    }
    return bytes;
}

QString rootNames()
{
    QStringList names;
    for (const SourceFormat &format : kFormats)
        names += u'<' + QString(format.rootName) + "> ("_L1 + QString(format.name) + u')';
    return names.join(" or "_L1);
}

} // namespace

std::span<const SourceFormat> sourceFormats()
{
    return kFormats;
}

const SourceFormat *sourceFormatOf(const QByteArray &bytes)
{
    const QByteArrayView name = rootNameOf(bytes);
    const auto *const row = std::ranges::find_if(
        kFormats, [&](const SourceFormat &format) { return format.rootName == QLatin1StringView(name); });
    return row == std::end(kFormats) ? nullptr : row;
}

std::unique_ptr<chip::Device> readDevice(const QByteArray &bytes, const QString &file, Sink &sink)
{
    const SourceFormat *format = sourceFormatOf(bytes);
    TagDocument document;
    if (const TagDocument::Error error =
            document.read(format && !format->usesPrefixes ? withoutPrefixes(bytes) : bytes)) {
        sink.take(Finding(*error.refusal.rule, {file, error.line, error.column}, error.refusal.arguments));
        return nullptr;
    }
    const Tag root = document.root();
    if (!format) {
        sink.take(Finding(rules::importUnknownFormat, {file, root.lineNumber(), root.columnNumber()},
                          {root.nameAsWritten().toString(), rootNames()}));
        return nullptr;
    }
    return format->read(root, file, sink);
}

} // namespace veldmap
