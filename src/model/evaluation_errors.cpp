#include "model/evaluation_errors.h"

#include "expression/evaluator.h"
#include "text/literals.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// What an error code of the evaluator means to its user.
struct EvaluationRule {
    int error;
    Rule rule;
};
constexpr EvaluationRule kEvaluationRules[] = {
    {cexev::CExEv::kErrorToken,
     {"expression-token"_L1, Severity::Error, u"'%1' has no value: a character or literal that has no meaning here"}},
    {cexev::CExEv::kErrorMemory, {"expression-memory"_L1, Severity::Error, u"'%1' has no value: out of memory"}},
    {cexev::CExEv::kErrorIdentifier,
     {"expression-name"_L1, Severity::Error, u"'%1' has no value: a name that is not known"}},
    {cexev::CExEv::kErrorSyntax,
     {"expression-syntax"_L1, Severity::Error, u"'%1' has no value: something stands where it may not stand"}},
    {cexev::CExEv::kErrorCall,
     {"expression-call"_L1, Severity::Error, u"'%1' has no value: an operation that these values do not allow"}},
    {cexev::CExEv::kErrorUnary,
     {"expression-unary"_L1, Severity::Error, u"'%1' has no value: an operation that these values do not allow"}},
    {cexev::CExEv::kErrorParenthesis,
     {"expression-parenthesis"_L1, Severity::Error, u"'%1' has no value: a parenthesis is left open"}},
};
constexpr Rule kOtherError = {"expression-error"_L1, Severity::Error, u"'%1' has no value: error %2"};

constexpr Rule kPlacedReason = {"expression-place"_L1, Severity::Error, u"%1, at character %2"};

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

} // namespace

Finding evaluationError(const QString &expression, int error)
{
    const auto row = std::ranges::find(kEvaluationRules, error, &EvaluationRule::error);
    if (row == std::end(kEvaluationRules))
        return Finding(kOtherError, {}, {expression, QString::number(error)});
    return Finding(row->rule, {}, {expression});
}

Finding evaluationError(const QString &expression, const cexev::CExEv &evaluator)
{
    const int error = evaluator.getError();
    const bool hasPlace = error == cexev::CExEv::kErrorToken || error == cexev::CExEv::kErrorIdentifier ||
                          error == cexev::CExEv::kErrorSyntax;
    const qsizetype place = hasPlace ? characterAt(expression, evaluator.getErrorPosition()) : -1;
    if (place < 0)
        return evaluationError(expression, error);
    return Finding(kPlacedReason, {}, {evaluationError(expression, error).text(), QString::number(place + 1)});
}

} // namespace veldmap
