#include "model/evaluation_errors.h"

#include "expression/evaluator.h"
#include "text/literals.h"
#include "text/names.h"

#include <algorithm>
#include <iterator>
#include <optional>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr Rule kToken = {"expression-token"_L1, Severity::Error, u"'%1' has no value: '%2' has no meaning here%3"};
constexpr Rule kText = {"expression-text"_L1, Severity::Error,
                        u"'%1' has no value: a character or literal that has no meaning here%2"};
constexpr Rule kEmpty = {"expression-empty"_L1, Severity::Error, u"'%1' has no value: it is empty"};
constexpr Rule kMemory = {"expression-memory"_L1, Severity::Error, u"'%1' has no value: out of memory"};
constexpr Rule kName = {"expression-name"_L1, Severity::Error, u"'%1' has no value: the name '%2' is not known%3"};
constexpr Rule kOperand = {"expression-operand"_L1, Severity::Error,
                           u"'%1' has no value: a number, a name or '(' is expected%2"};
constexpr Rule kOperator = {"expression-operator"_L1, Severity::Error, u"'%1' has no value: an operator is expected%2"};
constexpr Rule kSyntax = {"expression-syntax"_L1, Severity::Error,
                          u"'%1' has no value: something stands where it may not stand%2"};
constexpr Rule kClosing = {"expression-closing"_L1, Severity::Error, u"'%1' has no value: this ')' closes nothing%2"};
constexpr Rule kFunction = {"expression-function"_L1, Severity::Error,
                            u"'%1' has no value: there is no function '%2'; exp2(n) is one%3"};
constexpr Rule kOneValue = {"expression-one-value"_L1, Severity::Error,
                            u"'%1' has no value: a function takes one value%2"};
constexpr Rule kCall = {"expression-call"_L1, Severity::Error,
                        u"'%1' has no value: an operation that these values do not allow, as a division by 0"};
constexpr Rule kParenthesis = {"expression-parenthesis"_L1, Severity::Error,
                               u"'%1' has no value: a parenthesis is left open%2"};
constexpr Rule kOtherError = {"expression-error"_L1, Severity::Error, u"'%1' has no value: error %2"};

/// The character of \a expression that stands at \a byte of what the evaluator was given, where literals are decimal;
/// -1 where it is not worth the search.
qsizetype characterAt(const QString &expression, std::size_t byte)
{
    constexpr qsizetype kLongest = 256;
    if (expression.size() > kLongest)
        return -1;
    qsizetype character = 0;
    while (character < expression.size() &&
           hexadecimalPreparseExpression(expression.first(character + 1)).toUtf8().size() <=
               static_cast<qsizetype>(byte))
        ++character;
    return character;
}

/// Says what is wrong with one expression.
class Explainer {
public:
    Explainer(const QString &expression, qsizetype at) : m_text(expression), m_at(at) {}

    Finding ofToken() const
    {
        const bool isShown = m_at >= 0 && m_at < m_text.size() && m_text[m_at].isPrint() && m_text[m_at] != u'"' &&
                             m_text[m_at] != u'\'' && !m_text[m_at].isSurrogate();
        return isShown ? tell(kToken, QString(m_text[m_at])) : tell(kText);
    }

    Finding ofName() const
    {
        const QString name = m_at < 0 ? QString() : wordAt(m_at);
        Finding finding = tell(kName, name.isEmpty() ? u"..."_s : name);
        finding.expression.unknownName = name;
        return finding;
    }

    Finding ofSyntax()
    {
        if (m_text.trimmed().isEmpty()) {
            m_at = -1;
            return tell(kEmpty);
        }
        if (m_at < 0)
            return tell(kSyntax);
        const QChar here = m_at < m_text.size() ? m_text[m_at] : QChar();
        if (!isBehindOperand())
            return tell(kOperand);
        if (here == u',' && !m_text.first(m_at).contains(u'('))
            return tell(kToken, QString(here));
        if (here == u',' || (here == u')' && m_text.first(m_at).contains(u',')))
            return tell(kOneValue);
        return here == u')' ? tell(kClosing) : tell(kOperator);
    }

    /// Where a call failed, the evaluator does not tell.
    Finding ofCall()
    {
        const std::optional<qsizetype> unknown = unknownFunction();
        m_at = unknown.value_or(-1);
        if (!unknown)
            return tell(kCall);
        return tell(kFunction, wordAt(m_at));
    }

    Finding ofParenthesis()
    {
        m_at = m_text.lastIndexOf(u'('); // the innermost may be closed, which a reader sees
        int open = 0;
        for (qsizetype at = m_text.size() - 1; at >= 0 && open >= 0; --at) {
            open += m_text[at] == u')' ? 1 : m_text[at] == u'(' ? -1 : 0;
            m_at = at;
        }
        return tell(kParenthesis);
    }

private:
    /// The finding, whose last argument is the place.
    Finding tell(const Rule &rule, const QString &more = {}) const
    {
        QStringList arguments = {m_text};
        if (!more.isEmpty())
            arguments += more;
        arguments += m_at < 0                ? QString()
                     : m_at >= m_text.size() ? u", at its end"_s
                                             : u", at character "_s + QString::number(m_at + 1);
        Finding finding(rule, {}, arguments);
        finding.expression = {m_text, m_at};
        return finding;
    }

    QString wordAt(qsizetype begin) const
    {
        qsizetype end = begin;
        while (end < m_text.size() && isNameCharacter(m_text[end]))
            ++end;
        return m_text.sliced(begin, end - begin);
    }

    bool isBehindOperand() const
    {
        const QStringView before = QStringView(m_text).first(qMin(m_at, m_text.size())).trimmed();
        if (before.isEmpty())
            return false;
        const QChar last = before.back();
        return isNameCharacter(last) || last == u')' || last == u'"' || last == u'\'';
    }

    std::optional<qsizetype> unknownFunction() const
    {
        for (qsizetype at = 0; at < m_text.size(); ++at) {
            if (!isNameCharacter(m_text[at]))
                continue;
            const QString word = wordAt(at);
            const QStringView rest = QStringView(m_text).sliced(at + word.size()).trimmed();
            if (!word.front().isDigit() && rest.startsWith(u'(') && word != "exp2"_L1 && word != "sin"_L1)
                return at;
            at += word.size() - 1;
        }
        return std::nullopt;
    }

    const QString m_text;
    qsizetype m_at;
};

} // namespace

Finding evaluationError(const QString &expression, const cexev::CExEv &evaluator)
{
    Explainer explainer(expression, characterAt(expression, evaluator.getErrorPosition()));
    switch (evaluator.getError()) {
    case cexev::CExEv::kErrorToken:
        return explainer.ofToken();
    case cexev::CExEv::kErrorIdentifier:
        return explainer.ofName();
    case cexev::CExEv::kErrorSyntax:
        return explainer.ofSyntax();
    case cexev::CExEv::kErrorCall:
    case cexev::CExEv::kErrorUnary:
        return explainer.ofCall();
    case cexev::CExEv::kErrorParenthesis:
        return explainer.ofParenthesis();
    case cexev::CExEv::kErrorMemory:
        return Finding(kMemory, {}, {expression});
    default:
        return Finding(kOtherError, {}, {expression, QString::number(evaluator.getError())});
    }
}

} // namespace veldmap
