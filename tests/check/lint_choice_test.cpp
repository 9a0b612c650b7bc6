#include "check/lint_choice.h"
#include "support/loaded.h"

using namespace Qt::StringLiterals;
using veldmap::Finding;
using veldmap::LintChoice;
using veldmap::LintRule;
using veldmap::Severity;

namespace {

constexpr LintRule kOverlap = {{"test-overlap"_L1, Severity::Warning, u"'%1' overlaps '%2'"}};
constexpr LintRule kCut = {{"test-cut"_L1, Severity::Error, u"'%1' is cut"}};
constexpr LintRule kUnused = {{"test-unused"_L1, Severity::Note, u"'%1' is not used"}, false};
constexpr LintRule kNoTest = {{"no-test"_L1, Severity::Warning, u"no test"}};
constexpr const LintRule *kRules[] = {&kOverlap, &kCut, &kUnused, &kNoTest};
constexpr veldmap::Rule kLoader = {"test-loader"_L1, Severity::Warning, u"of a load"};

/// What each rule and the loader's warning count as after \a words: e, w, n, or - for what is not told.
QString countedAfter(const QStringList &words)
{
    LintChoice choice(kRules);
    for (const QString &word : words)
        EXPECT_TRUE(choice.take(word)) << word.toStdString();
    QString counted;
    for (const LintRule *rule : kRules) {
        const auto severity = choice.severityOf(Finding(rule->rule));
        counted += !severity ? u'-' : u"nwe"[static_cast<int>(*severity)];
    }
    return counted + u"nwe"[static_cast<int>(*choice.severityOf(Finding(kLoader)))];
}

} // namespace

TEST(LintChoice, SingleRulesHoldBeforeAll)
{
    const struct {
        QStringList words;
        QString expected; // overlap, cut, unused, no-test, loader
    } rows[] = {
        {{}, u"we-ww"_s},
        {{u"test-unused"_s}, u"wenww"_s},
        {{u"no-test-overlap"_s}, u"-e-ww"_s},
        {{u"no-test-overlap"_s, u"test-overlap"_s}, u"we-ww"_s},
        {{u"test-overlap"_s, u"no-test-overlap"_s}, u"-e-ww"_s},
        {{u"no-test"_s}, u"we-ww"_s},
        {{u"no-no-test"_s}, u"we--w"_s},
        {{u"all"_s}, u"wenww"_s},
        {{u"no-test-unused"_s, u"all"_s}, u"we-ww"_s},
        {{u"no-all"_s, u"test-cut"_s}, u"-e--w"_s},
        {{u"error"_s}, u"ee-ee"_s},
        {{u"error"_s, u"all"_s}, u"eenee"_s},
        {{u"error"_s, u"no-error"_s}, u"we-ww"_s},
        {{u"error"_s, u"no-error=test-overlap"_s}, u"we-ee"_s},
        {{u"error=test-unused"_s}, u"weeww"_s},
        {{u"no-error=test-cut"_s}, u"ww-ww"_s},
        {{u"no-error=test-unused"_s, u"test-unused"_s}, u"wenww"_s},
        {{u"error=test-overlap"_s, u"no-test-overlap"_s}, u"-e-ww"_s},
    };
    for (const auto &row : rows)
        EXPECT_EQ(countedAfter(row.words), row.expected) << row.words.join(u' ').toStdString();
}

TEST(LintChoice, UnknownIdsAreRefusedWithTheNearest)
{
    const struct {
        QString word;
        QString id;
        QString nearest;
    } rows[] = {
        {u"test-overlpa"_s, u"test-overlpa"_s, u"test-overlap"_s},
        {u"no-Test-Cut"_s, u"Test-Cut"_s, u"test-cut"_s},
        {u"error=tets-cut"_s, u"tets-cut"_s, u"test-cut"_s},
        {u"no-error=test-unsued"_s, u"test-unsued"_s, u"test-unused"_s},
        {u"no-tes"_s, u"tes"_s, u"no-test"_s},
        {u"something-else"_s, u"something-else"_s, QString()},
        {QString(), QString(), QString()},
        {u"no-"_s, QString(), QString()},
        {u"error=all"_s, u"all"_s, QString()},
        {QString(100'000, u'x'), QString(100'000, u'x'), QString()},
    };
    LintChoice choice(kRules);
    for (const auto &row : rows) {
        EXPECT_FALSE(choice.take(row.word)) << row.word.toStdString();
        EXPECT_EQ(LintChoice::idOf(row.word), row.id);
        EXPECT_EQ(choice.nearestId(row.word), row.nearest);
    }
}

TEST(LintChoice, RepeatsAndTooManyAreCounted)
{
    const auto at = [](qint64 line) { return veldmap::Place{u"soc.xml"_s, line, 1}; };
    QList<Finding> findings;
    for (const char16_t name : u"abacde"_s.toStdU16String())
        findings += Finding(kOverlap.rule, at(1), {QString(QChar(name)), u"x"_s});
    findings += Finding(kUnused.rule, at(1), {u"a"_s});
    findings += Finding(kNoTest.rule, at(1));
    findings += Finding(kNoTest.rule, at(2));
    findings += Finding(kNoTest.rule, at(0));
    findings += Finding(kNoTest.rule, at(0)); // a file as a whole is no place at which things repeat
    findings += Finding(kCut.rule, at(3), {u"a"_s});
    const auto told = [&](qsizetype most) {
        const veldmap::LintSelection selection = veldmap::selectFindings(findings, LintChoice(kRules), most);
        QStringList texts;
        for (const auto &[finding, more] : selection.told)
            texts += QString::number(finding.place.line) + finding.text() + u'+' + QString::number(more);
        return texts << u"hidden %1"_s.arg(selection.hidden);
    };
    const QStringList all = {u"1'a' overlaps 'x'+0"_s, u"1'b' overlaps 'x'+1"_s, u"1'c' overlaps 'x'+2"_s,
                             u"1no test+0"_s,          u"2no test+0"_s,          u"0no test+0"_s,
                             u"0no test+0"_s,          u"3'a' is cut+0"_s};
    EXPECT_EQ(told(0), all + QStringList{u"hidden 0"_s});
    EXPECT_EQ(told(7), all + QStringList{u"hidden 0"_s});
    EXPECT_EQ(told(4), (all.first(4) + QStringList{all.last(), u"hidden 3"_s}));
}
