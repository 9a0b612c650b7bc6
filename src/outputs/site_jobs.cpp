#include "docsite/site.h"
#include "docsite/site_text.h"
#include "findings/limits.h"
#include "model/root_archive.h"
#include "outputs/copy_job.h"
#include "outputs/output_jobs.h"
#include "outputs/outputs.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

JobTexts oneFile(const QString &path, const QByteArray &bytes)
{
    JobTexts texts;
    texts.files.push_back({path, bytes, {}});
    return texts;
}

constexpr QByteArrayView kEncodingMark = "\xEF\xBB\xBF";

bool isAscii(QByteArrayView text)
{
    return std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

/// \a page as it is served: servers don't tell in which encoding it is, so one that is not in ASCII tells it itself.
QByteArray withEncoding(QByteArray page)
{
    if (!isAscii(page))
        page.prepend(kEncodingMark.toByteArray());
    return page;
}

/// Looks at a text up to the first byte that is not ASCII, or until it has seen \a most bytes.
class AsciiCheck final : public TextSink {
public:
    explicit AsciiCheck(qint64 most) : m_left(most) {}

    bool take(QByteArrayView piece) override
    {
        m_isAscii = m_isAscii && veldmap::isAscii(piece);
        m_left -= piece.size();
        return m_isAscii && m_left >= 0;
    }
    bool isAscii() const { return m_isAscii; }

private:
    qint64 m_left;
    bool m_isAscii = true;
};

/// Gives \a sink the text that \a append appends.
template <typename Append>
bool inPieces(TextSink &sink, const Append &append)
{
    SiteText text;
    text.giveTo(sink, limits::kPieceOfText);
    append(text);
    return text.giveRest();
}

/// A job for \a file of the site, whose text \a append appends.
template <typename Append>
OutputJob siteFile(const OutputOptions &options, const QString &file, const Append &append)
{
    OutputJob job;
    job.path = options.directory + u'/' + file;
    job.name = file;
    job.usesBuffer = true;
    const bool isPage = file.endsWith(".html"_L1);
    job.make = [path = job.path, append, isPage](QByteArray buffer) {
        SiteText text(std::move(buffer));
        NoSink none;
        text.giveTo(none, limits::kTextInMemory);
        append(text);
        if (text.isEnded())
            return tooLarge();
        return oneFile(path, isPage ? withEncoding(text.takeBytes()) : text.takeBytes());
    };
    job.pieces = [append, isPage, most = options.mostBytes](TextSink &sink) {
        AsciiCheck check(most);
        if (isPage)
            inPieces(check, append);
        return (check.isAscii() || sink.take(kEncodingMark)) && inPieces(sink, append);
    };
    return job;
}

/// Why an instance of that name can have no page; empty when it can. The name becomes that of a file as it stands.
QString refusalOf(const QString &name)
{
    if (name.contains(u'/') || name.contains(".."_L1))
        return u"the name of the instance leads out of the directory"_s;
    if (isSiteFile(name + ".html"_L1))
        return u"the site has another file of that name"_s;
    return {};
}

OutputJob pageJob(const VMXMLElement &instance, const OutputOptions &options)
{
    OutputJob job =
        siteFile(options, instance.getName() + ".html"_L1, [&instance](SiteText &text) { appendPage(text, instance); });
    job.name = instance.getName();
    job.refusal = refusalOf(instance.getName());
    job.isPage = true;
    return job;
}

} // namespace

OutputJobs poolJobs(const OutputOptions &options)
{
    OutputJobs jobs;
    for (const QLatin1StringView file : poolFiles())
        jobs.push_back(copyJob(options, file));
    return jobs;
}

OutputJob menuJob(const VMRootArchive &root, const OutputOptions &options)
{
    return siteFile(options, kMenuScript, [&root](SiteText &text) { appendMenuScript(text, root); });
}

OutputJob startPageJob(const VMRootArchive &root, const OutputOptions &options)
{
    return siteFile(options, kStartPage, [&root](SiteText &text) { appendStartPage(text, root); });
}

OutputJob framesJob(const VMRootArchive &root, const OutputOptions &options)
{
    return siteFile(options, kFrames, [&root](SiteText &text) { appendFrames(text, root); });
}

OutputJobs siteJobs(const VMRootArchive &root, const OutputOptions &options)
{
    OutputJobs jobs = poolJobs(options);
    jobs.push_back(menuJob(root, options));
    jobs.push_back(startPageJob(root, options));
    jobs.push_back(framesJob(root, options));
    for (const auto &instance : root.instances)
        jobs.push_back(pageJob(*instance, options));
    return jobs;
}

} // namespace veldmap
