#include "findings/limits.h"
#include "outputs/copy_job.h"
#include "outputs/output_jobs.h"
#include "outputs/outputs.h"
#include "site/html_text.h"
#include "site/pages.h"
#include "site/search_index.h"
#include "site/site_plan.h"

#include <memory>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// The files of src/site/assets, which lie in the pool.
constexpr QLatin1StringView kStyle = "site.css"_L1;
constexpr QLatin1StringView kScripts[] = {"site.js"_L1, "search.js"_L1};

using Plan = std::shared_ptr<const SitePlan>;

/// A job for \a file, whose text \a append appends.
template <typename Append>
OutputJob pageJob(const OutputOptions &options, const QString &file, const Append &append)
{
    OutputJob job;
    job.path = options.directory + u'/' + file;
    job.name = file;
    job.usesBuffer = true;
    job.make = [path = job.path, append](QByteArray buffer) {
        HtmlText text(std::move(buffer));
        NoSink none;
        text.giveTo(none, limits::kTextInMemory);
        append(text);
        if (text.isEnded())
            return tooLarge();
        JobTexts texts;
        texts.files.push_back({path, text.takeBytes(), {}});
        return texts;
    };
    job.pieces = [append](TextSink &sink) {
        HtmlText text;
        text.giveTo(sink, limits::kPieceOfText);
        append(text);
        return text.giveRest();
    };
    return job;
}

void addPages(OutputJobs &jobs, const Plan &plan, const OutputOptions &options)
{
    for (const ListPages &list : listPagesOf(*plan)) {
        for (qsizetype page = 0; page < list.count; ++page)
            jobs.push_back(pageJob(options, list.fileOf(page),
                                   [plan, append = list.append, page](HtmlText &text) { append(text, *plan, page); }));
    }
    for (qsizetype at = 0; at < static_cast<qsizetype>(plan->instances().size()); ++at)
        jobs.push_back(pageJob(options, plan->instances()[static_cast<std::size_t>(at)].file,
                               [plan, at](HtmlText &text) { appendInstancePage(text, *plan, at); }));
    for (qsizetype at = 0; at < static_cast<qsizetype>(plan->types().size()); ++at) {
        if (const SiteType &type = plan->types()[static_cast<std::size_t>(at)]; type.hasPage)
            jobs.push_back(
                pageJob(options, type.file, [plan, at](HtmlText &text) { appendTypePage(text, *plan, at); }));
    }
}

/// The files of the search, in a directory of their own.
void addSearch(OutputJobs &jobs, const Plan &plan, const OutputOptions &options)
{
    const auto index = std::make_shared<const SearchIndex>(*plan);
    const auto pathOf = [directory = options.directory](const QString &kind, qsizetype number) {
        return u"%1/search/%2-%3.js"_s.arg(directory, kind, QString::number(number));
    };
    const auto add = [&](const QString &path, const QStringList &further, const auto &make) {
        OutputJob job;
        job.path = path;
        job.further = further;
        job.name = path.section(u'/', -1);
        job.directory = u"search"_s;
        job.make = [plan, make](const QByteArray &) { return make(); };
        jobs.push_back(std::move(job));
    };
    const auto addPiece = [&](const QString &path, const auto &script) {
        add(path, {}, [path, script] {
            JobTexts texts;
            texts.files.push_back({path, script(), {}});
            return texts;
        });
    };
    QStringList further;
    for (qsizetype at = 1; at <= index->wordsPieces(); ++at)
        further += pathOf(u"words"_s, at);
    for (qsizetype at = 0; at < index->textsPieces(); ++at)
        further += pathOf(u"texts"_s, at);
    add(pathOf(u"words"_s, 0), further, [index, pathOf] {
        JobTexts texts;
        const auto take = [&](const QString &kind, const std::vector<QByteArray> &scripts) {
            for (qsizetype at = 0; const QByteArray &script : scripts)
                texts.files.push_back({pathOf(kind, at++), script, {}});
        };
        const SearchIndex::Descriptions made = index->descriptions();
        take(u"words"_s, made.words);
        take(u"texts"_s, made.texts);
        return texts;
    });
    addPiece(pathOf(u"main"_s, 0), [index] { return index->mainScript(); });
    for (qsizetype piece = 0; piece < index->namesPieces(); ++piece)
        addPiece(pathOf(u"names"_s, piece), [index, piece] { return index->namesScript(piece); });
}

} // namespace

OutputJobs manualJobs(const VMMemoryMap &map, const OutputOptions &options)
{
    const auto plan = std::make_shared<const SitePlan>(map);
    OutputJobs jobs;
    jobs.push_back(copyJob(options, kStyle));
    if (options.single) {
        jobs.push_back(pageJob(options, u"manual.html"_s, [plan](HtmlText &text) { appendManual(text, *plan); }));
        return jobs;
    }
    for (const QLatin1StringView script : kScripts)
        jobs.push_back(copyJob(options, script));
    addSearch(jobs, plan, options);
    addPages(jobs, plan, options);
    return jobs;
}

} // namespace veldmap
