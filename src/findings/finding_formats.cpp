#include "findings/finding_formats.h"

#include <QDir>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

QByteArray lineOfJson(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

/// The further places of \a finding, and the tags that include its file.
QList<RelatedPlace> placesOf(const Finding &finding)
{
    QList<RelatedPlace> places = finding.related;
    for (const Place &include : finding.includes)
        places.append({include, u"included from here"_s});
    return places;
}

class JsonFormat final : public FindingFormat {
public:
    QByteArray begin() const override { return "["; }
    QByteArray end() const override { return "\n]\n"; }

    QByteArray piece(const Finding &finding, Severity severity, const QString &text) override
    {
        QJsonObject object = at(finding.place, text);
        object[u"rule"_s] = QString(finding.rule->id);
        object[u"severity"_s] = wordOf(severity);
        if (const QString hint = finding.whatToDo(); !hint.isEmpty())
            object[u"hint"_s] = hint;
        if (!finding.note.isEmpty())
            object[u"note"_s] = finding.note;
        QJsonArray related;
        for (const RelatedPlace &other : placesOf(finding))
            related.append(at(other.place, other.what));
        if (!related.isEmpty())
            object[u"related"_s] = related;
        const QByteArray separator = m_isFirst ? "\n" : ",\n";
        m_isFirst = false;
        return separator + lineOfJson(object);
    }

private:
    static QJsonObject at(const Place &place, const QString &text)
    {
        return {{u"file"_s, place.file}, {u"line"_s, place.line}, {u"column"_s, place.column}, {u"text"_s, text}};
    }

    bool m_isFirst = true;
};

// {"$schema":...,"version":"2.1.0","runs":[{"columnKind":"utf16CodeUnits","results":[
// {"level":"warning","locations":[...],"message":{"text":"..."},"ruleId":"field-overlap","ruleIndex":0},
// ...
// ],"tool":{"driver":{"name":"veldmap",...,"rules":[...]}}}]}
//
// The tool comes last, since only then it is known which rules have found something.
class SarifFormat final : public FindingFormat {
public:
    SarifFormat(const QString &version, const QString &directory) : m_version(version), m_directory(directory) {}

    QByteArray begin() const override
    {
        return "{\"$schema\":\"https://json.schemastore.org/sarif-2.1.0.json\",\"version\":\"2.1.0\",\"runs\":["
               "{\"columnKind\":\"utf16CodeUnits\",\"results\":[";
    }

    QByteArray piece(const Finding &finding, Severity severity, const QString &text) override
    {
        const QByteArray separator = m_rules.isEmpty() ? "\n" : ",\n";
        const Rule *rule = finding.rule;
        if (!m_places.contains(rule->id)) {
            m_places.insert(rule->id, m_rules.size());
            m_rules += rule;
        }
        QStringList message = {text};
        if (!finding.note.isEmpty())
            message += finding.note;
        if (const QString hint = finding.whatToDo(); !hint.isEmpty())
            message += hint;
        QJsonObject object = {{u"ruleId"_s, QString(rule->id)},
                              {u"ruleIndex"_s, m_places.value(rule->id)},
                              {u"level"_s, wordOf(severity)},
                              {u"message"_s, messageOf(message.join(u'\n'))}};
        if (!finding.place.isNull())
            object[u"locations"_s] = QJsonArray{location(finding.place)};
        QJsonArray related;
        for (const RelatedPlace &other : placesOf(finding)) {
            if (other.place.isNull())
                continue;
            QJsonObject there = location(other.place);
            there[u"message"_s] = messageOf(other.what);
            related.append(there);
        }
        if (!related.isEmpty())
            object[u"relatedLocations"_s] = related;
        return separator + lineOfJson(object);
    }

    QByteArray end() const override
    {
        QJsonArray rules;
        for (const Rule *rule : m_rules) {
            QJsonObject object = {{u"id"_s, QString(rule->id)},
                                  {u"shortDescription"_s, messageOf(wordsWithoutArguments(*rule).trimmed())},
                                  {u"defaultConfiguration"_s, QJsonObject{{u"level"_s, wordOf(rule->severity)}}}};
            if (!rule->hint.isEmpty())
                object[u"help"_s] = messageOf(rule->hint.toString());
            rules.append(object);
        }
        const QJsonObject driver = {{u"name"_s, u"veldmap"_s}, {u"version"_s, m_version}, {u"rules"_s, rules}};
        return "\n],\"tool\":" + lineOfJson({{u"driver"_s, driver}}) + "}]}\n";
    }

private:
    static QJsonObject messageOf(const QString &text) { return {{u"text"_s, text}}; }

    /// The address of \a file: relative where it lies below the directory.
    QString addressOf(const QString &file) const
    {
        const QDir directory(m_directory);
        const QString whole = QDir::cleanPath(directory.absoluteFilePath(file));
        const QString front = directory.absolutePath() == "/"_L1 ? u"/"_s : directory.absolutePath() + u'/';
        const bool isBelow = whole.startsWith(front);
        const QByteArray path = QUrl::toPercentEncoding(isBelow ? whole.sliced(front.size()) : whole, "/");
        return (isBelow ? QString() : u"file://"_s) + QString::fromLatin1(path);
    }

    QJsonObject location(const Place &place) const
    {
        QJsonObject physical = {{u"artifactLocation"_s, QJsonObject{{u"uri"_s, addressOf(place.file)}}}};
        if (place.line > 0) { // both count from 1
            QJsonObject region = {{u"startLine"_s, place.line}};
            if (place.column > 0)
                region[u"startColumn"_s] = place.column;
            physical[u"region"_s] = region;
        }
        return {{u"physicalLocation"_s, physical}};
    }

    QString m_version;
    QString m_directory;
    QList<const Rule *> m_rules;                  ///< that have found something, in that order
    QHash<QLatin1StringView, qsizetype> m_places; ///< of each in the list, by its ID
};

} // namespace

std::unique_ptr<FindingFormat> jsonOfFindings()
{
    return std::make_unique<JsonFormat>();
}

std::unique_ptr<FindingFormat> sarifOfFindings(const QString &version, const QString &directory)
{
    return std::make_unique<SarifFormat>(version, directory);
}

} // namespace veldmap
