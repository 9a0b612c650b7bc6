#include "outputs/output_jobs.h"
#include "outputs/outputs.h"
#include "site/html_text.h"
#include "site/pages.h"
#include "site/site_plan.h"

#include <QFile>

#include <memory>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// The files of src/site/assets, which lie in the pool.
constexpr QLatin1StringView kStyle = "site.css"_L1;
constexpr QLatin1StringView kScripts[] = {"site.js"_L1, "search.js"_L1};

using Plan = std::shared_ptr<const SitePlan>;

OutputJob assetJob(const OutputOptions &options, QLatin1StringView file)
{
    OutputJob job;
    job.path = options.directory + u'/' + file;
    job.name = file;
    job.waits = true;
    job.make = [path = job.path, source = options.pool + u'/' + file](const QByteArray &) {
        JobTexts texts;
        QFile asset(source);
        if (asset.open(QIODevice::ReadOnly)) {
            texts.files.push_back({path, asset.readAll(), {}});
        } else {
            texts.isMissing = !QFile::exists(source);
            texts.failure = u"%1 can't be read: %2"_s.arg(source, asset.errorString());
        }
        return texts;
    };
    return job;
}

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
        append(text);
        JobTexts texts;
        texts.files.push_back({path, text.takeBytes(), {}});
        return texts;
    };
    return job;
}

void addPages(OutputJobs &jobs, const Plan &plan, const OutputOptions &options)
{
    for (const ListPages &list : listPagesOf(*plan)) {
        for (qsizetype page = 0; page < list.count; ++page)
            jobs.push_back(pageJob(options, list.fileOf(page), [plan, append = list.append, page](HtmlText &text) {
                append(text, *plan, page);
            }));
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

} // namespace

OutputJobs manualJobs(const VMMemoryMap &map, const OutputOptions &options)
{
    const auto plan = std::make_shared<const SitePlan>(map);
    OutputJobs jobs;
    jobs.push_back(assetJob(options, kStyle));
    if (options.single) {
        jobs.push_back(pageJob(options, u"manual.html"_s, [plan](HtmlText &text) { appendManual(text, *plan); }));
        return jobs;
    }
    for (const QLatin1StringView script : kScripts)
        jobs.push_back(assetJob(options, script));
    addPages(jobs, plan, options);
    return jobs;
}

} // namespace veldmap
