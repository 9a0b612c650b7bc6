#include "model/evaluation_errors.h"

#include "expression/evaluator.h"

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

} // namespace

Finding evaluationError(const QString &expression, int error)
{
    const auto row = std::ranges::find(kEvaluationRules, error, &EvaluationRule::error);
    if (row == std::end(kEvaluationRules))
        return Finding(kOtherError, {}, {expression, QString::number(error)});
    return Finding(row->rule, {}, {expression});
}

} // namespace veldmap
