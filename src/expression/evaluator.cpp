#include "expression/evaluator.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

using variant::Variant;

namespace cexev {

namespace {

constexpr const char *kBlanks = " \t\n\r";
constexpr int kLongestExponent = 3;

struct Operator {
    std::string_view symbol;
    int priority; // in binary position; higher binds tighter
};

// The text is tried against the rows in order, so the symbols of two characters stand first.
constexpr Operator kOperators[] = {
    {"<<", 8}, {">>", 8}, {"<=", 7}, {">=", 7}, {"==", 6}, {"!=", 6}, {"&&", 2}, {"||", 1}, {"*", 10}, {"/", 10},
    {"%", 10}, {"+", 9},  {"-", 9},  {"<", 7},  {">", 7},  {"&", 5},  {"^", 4},  {"|", 3},  {"~", 0},  {"!", 0},
};

struct Escape {
    char letter;
    char character;
};

constexpr Escape kEscapes[] = {
    {'\\', '\\'}, {'\'', '\''}, {'"', '"'}, {'t', '\t'}, {'n', '\n'}, {'r', '\r'}, {'b', '\b'}, {'a', '\a'},
};

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

const char *skipDigits(const char *text)
{
    while (isDigit(*text))
        ++text;
    return text;
}

/// The kind of a token that is a single mark, or kTokenNull.
int kindOfMark(char character)
{
    switch (character) {
    case '(':
        return CExEv_Token::kTokenOParen;
    case ')':
        return CExEv_Token::kTokenCParen;
    case ',':
        return CExEv_Token::kTokenComma;
    default:
        return CExEv_Token::kTokenNull;
    }
}

/// Tells a number too large for a double from one too small: whether its first digit other than 0 stands left of the
/// point once the exponent has moved the point.
bool isLarge(std::string_view number)
{
    const std::size_t mantissaSize = std::min(number.find_first_of("eE"), number.size());
    const std::string_view mantissa = number.substr(0, mantissaSize);
    int exponent = 0;
    if (mantissaSize < number.size()) {
        std::string_view digits = number.substr(mantissaSize + 1);
        if (digits.starts_with('+'))
            digits.remove_prefix(1);
        std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
    }
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t firstDigit = mantissa.find_first_of("123456789");
    return static_cast<std::ptrdiff_t>(point) - static_cast<std::ptrdiff_t>(firstDigit) + exponent > 0;
}

/// Reads a real with a decimal point under every locale of the host. An exponent without digits counts as none.
double realFromText(const char *first, const char *last)
{
    double value = 0.0;
    const std::from_chars_result end = std::from_chars(first, last, value);
    if (end.ec != std::errc::result_out_of_range)
        return value;
    return isLarge(std::string_view(first, last)) ? std::numeric_limits<double>::infinity() : 0.0;
}

std::uint32_t wordFromText(const char *first, const char *last)
{
    std::uint32_t value = 0;
    const std::from_chars_result end = std::from_chars(first, last, value);
    return end.ec == std::errc::result_out_of_range ? std::numeric_limits<std::uint32_t>::max() : value;
}

int kindOf(const CExEv_Token *token)
{
    return token ? token->kind : CExEv_Token::kTokenNull;
}

const char *nameIn(const CExEv_Token &token)
{
    const char *const name = token.getString();
    return name ? name : "";
}

/// Whether an operand may begin on top of a token of this kind.
bool opensOperand(int kind)
{
    switch (kind) {
    case CExEv_Token::kTokenNull:
    case CExEv_Token::kTokenOParen:
    case CExEv_Token::kTokenFunc:
    case CExEv_Token::kTokenComma:
        return true;
    default:
        return false;
    }
}

} // namespace

CExEv_Token::CExEv_Token() = default;

CExEv_Token::CExEv_Token(const CExEv_Token &other) : Variant(other), kind(other.kind) {}

CExEv_Token::~CExEv_Token() = default;

CExEv_Token &CExEv_Token::operator=(const CExEv_Token &other)
{
    if (this == &other)
        return *this;
    Variant::operator=(other);
    kind = other.kind;
    return *this;
}

void CExEv_Token::clear()
{
    kind = kTokenNull;
    next = nullptr;
    setNull();
}

void CExEv_Token::becomeConst(Variant &&value)
{
    kind = kTokenConst;
    Variant::operator=(std::move(value));
}

void CExEv_Token::dump(std::string &out) const
{
    std::string value;
    asString(value);
    switch (kind) {
    case kTokenNull:
        out = "<NULL>";
        break;
    case kTokenUnknown:
        out = "<UNKNOWN>";
        break;
    case kTokenConst:
        out = "<CONST>[" + value + "]";
        break;
    case kTokenIdent:
        out = "<IDENT>[" + value + "]";
        break;
    case kTokenOParen:
        out = "<OPAREN>(";
        break;
    case kTokenCParen:
        out = "<CPAREN>)";
        break;
    case kTokenComma:
        out = "<COMMA>,";
        break;
    case kTokenOperator:
        out = "<OPERATOR>" + value;
        break;
    case kTokenFunc:
        out = "<FUNC>" + value;
        break;
    default:
        out = "<Impossible!>";
        break;
    }
}

CExEv::CExEv() : context(this) {}

CExEv::CExEv(CExEvCtx *meaning) : context(meaning) {}

CExEv::~CExEv() = default;

void CExEv::clear()
{
    m_top = nullptr;
    m_free = nullptr;
    m_current = nullptr;
    m_tokens.clear();
    std::string().swap(m_expression); // clear() would keep the memory
    m_position = m_expression.c_str();
    m_tokenBegin = 0;
    m_error = kSuccess;
    m_errorPosition = 0;
}

void CExEv::setError(int code)
{
    if (m_error != kSuccess)
        return;
    m_error = code;
    m_errorPosition = m_tokenBegin;
}

/// Ends a row of steps with \a error.
bool CExEv::stop(int error)
{
    setError(error);
    return false;
}

CExEv_Token *CExEv::newToken()
{
    if (!m_current && m_free) {
        m_current = m_free;
        m_free = m_free->next;
    }
    if (m_current) {
        m_current->clear();
        return m_current;
    }
    try {
        m_current = &m_tokens.emplace_back();
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
    return m_current;
}

void CExEv::push()
{
    if (!m_current)
        return;
    m_current->next = m_top;
    m_top = m_current;
    m_current = nullptr;
}

void CExEv::pop()
{
    if (!m_top)
        return;
    CExEv_Token *const token = m_top;
    m_top = token->next;
    token->next = m_free;
    m_free = token;
}

void CExEv::swapTop()
{
    if (!m_top || !m_top->next)
        return;
    CExEv_Token *const token = m_top;
    m_top = token->next;
    token->next = m_top->next;
    m_top->next = token;
}

int CExEv::getOperatorPriority(const char *symbol)
{
    const auto *const row = std::find_if(std::begin(kOperators), std::end(kOperators),
                                         [symbol](const Operator &each) { return each.symbol == symbol; });
    return row == std::end(kOperators) ? 0 : row->priority;
}

void CExEv::dumpStack() {}

// Reading.

int CExEv::getNextToken()
{
    CExEv_Token *const token = newToken();
    if (!token)
        return -1;
    if (!readToken(*token)) {
        setError(kErrorToken);
        token->kind = CExEv_Token::kTokenUnknown;
    }
    return token->kind;
}

bool CExEv::readToken(CExEv_Token &token)
{
    m_position += std::strspn(m_position, kBlanks);
    m_tokenBegin = static_cast<std::size_t>(m_position - m_expression.c_str());
    const char first = *m_position;
    if (first == '\0')
        return true; // the end is the token of no kind, and stays to be read again
    token.kind = kindOfMark(first);
    if (token.kind != CExEv_Token::kTokenNull) {
        ++m_position;
        return true;
    }
    if (isDigit(first))
        return readNumber(token);
    if (first == '\'')
        return readCharacter(token);
    if (first == '"')
        return readText(token);
    if (contextInUse().isValidIdentStartChar(static_cast<unsigned char>(first)))
        return readIdentifier(token);
    return readOperator(token);
}

bool CExEv::readNumber(CExEv_Token &token)
{
    const char *const first = m_position;
    const char *last = skipDigits(first);
    bool isReal = false;
    if (*last == '.') {
        isReal = true;
        last = skipDigits(last + 1);
    }
    if (*last == 'e' || *last == 'E') {
        isReal = true;
        ++last;
        if (*last == '+' || *last == '-')
            ++last;
        for (int digits = 0; digits < kLongestExponent && isDigit(*last); ++digits)
            ++last;
    }
    m_position = last;

    token.kind = CExEv_Token::kTokenConst;
    if (isReal) {
        token.setReal(realFromText(first, last));
        return true;
    }
    // A number that an Int does not hold is a DWORD, so that addresses of the upper half keep their value.
    const std::uint32_t word = wordFromText(first, last);
    if (word <= static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max()))
        token.setInt(static_cast<std::int32_t>(word));
    else
        token.setDWORD(word);
    return true;
}

/// Reads one character of a literal, which may be written as a backslash and a letter.
bool CExEv::readEscaped(char &character)
{
    if (*m_position == '\0')
        return false;
    character = *m_position++;
    if (character != '\\')
        return true;
    const auto *const row = std::find_if(std::begin(kEscapes), std::end(kEscapes),
                                         [this](const Escape &each) { return each.letter == *m_position; });
    if (row == std::end(kEscapes))
        return false;
    character = row->character;
    ++m_position;
    return true;
}

bool CExEv::readCharacter(CExEv_Token &token)
{
    ++m_position;
    char character = '\0';
    if (!readEscaped(character) || *m_position != '\'')
        return false;
    ++m_position;
    token.kind = CExEv_Token::kTokenConst;
    token.setInt(static_cast<signed char>(character)); // bytes from 128 on are negative on every target
    return true;
}

bool CExEv::readText(CExEv_Token &token)
{
    ++m_position;
    std::string text;
    while (*m_position != '"') {
        char character = '\0';
        if (!readEscaped(character))
            return false;
        text += character;
    }
    ++m_position;
    token.kind = CExEv_Token::kTokenConst;
    token.setString(std::move(text));
    return true;
}

bool CExEv::readIdentifier(CExEv_Token &token)
{
    CExEvCtx &alphabet = contextInUse();
    const char *const first = m_position++;
    while (*m_position != '\0' && alphabet.isValidIdentChar(static_cast<unsigned char>(*m_position)))
        ++m_position;
    token.kind = CExEv_Token::kTokenIdent;
    token.setString(std::string(first, m_position));
    return true;
}

bool CExEv::readOperator(CExEv_Token &token)
{
    const auto *const row = std::find_if(std::begin(kOperators), std::end(kOperators), [this](const Operator &each) {
        return std::strncmp(m_position, each.symbol.data(), each.symbol.size()) == 0;
    });
    if (row == std::end(kOperators))
        return false;
    m_position += row->symbol.size();
    token.kind = CExEv_Token::kTokenOperator;
    token.setString(std::string(row->symbol));
    return true;
}

// Evaluating: each token that is read goes on the stack or causes a reduction, or it may not stand where it does.

int CExEv::evalExpression(const char *expression, Variant &result)
{
    clear();
    if (!context)
        context = this;
    try {
        m_expression = expression ? expression : "";
        m_position = m_expression.c_str();
        result.setNull(); // only now, for its text may be the expression
        run();
        if (m_error == kSuccess)
            result = static_cast<const Variant &>(*m_top);
    } catch (const std::bad_alloc &) {
        result.setNull();
        setError(kErrorMemory);
    }
    return m_error;
}

/// Leaves the value of the text as the only token above the bottom mark, or an error.
void CExEv::run()
{
    if (!newToken()) {
        setError(kErrorMemory);
        return;
    }
    push();
    while (step()) {
    }
    if (m_error == kSuccess && !(kindOf(m_top) == CExEv_Token::kTokenConst && m_top->next && !m_top->next->next))
        setError(kErrorToken);
}

/// Reads one token and acts on it; false at the end of the text and after an error.
bool CExEv::step()
{
    const std::size_t previousBegin = m_tokenBegin;
    const int kind = getNextToken();
    if (kind == -1)
        return stop(kErrorMemory);
    if (kind == CExEv_Token::kTokenUnknown)
        return false;
    if (m_top->kind == CExEv_Token::kTokenIdent) {
        // Only the token behind a name tells a call from a value.
        if (kind == CExEv_Token::kTokenOParen) {
            m_top->kind = CExEv_Token::kTokenFunc;
            return true;
        }
        if (!resolveIdentifier()) {
            m_tokenBegin = previousBegin; // that of the name
            return stop(kErrorIdentifier);
        }
    }
    return accept(kind) && kind != CExEv_Token::kTokenNull;
}

bool CExEv::resolveIdentifier()
{
    Variant value;
    if (!contextInUse().getValue(nameIn(*m_top), value))
        return false;
    m_top->becomeConst(std::move(value));
    return true;
}

bool CExEv::accept(int kind)
{
    const int top = m_top->kind;
    switch (kind) {
    case CExEv_Token::kTokenConst:
    case CExEv_Token::kTokenIdent:
    case CExEv_Token::kTokenOParen:
        return pushIf(opensOperand(top) || top == CExEv_Token::kTokenOperator);
    case CExEv_Token::kTokenCParen:
        return reduceIf(top == CExEv_Token::kTokenConst || top == CExEv_Token::kTokenFunc, kind);
    case CExEv_Token::kTokenOperator:
        return acceptOperator();
    case CExEv_Token::kTokenComma:
        return acceptComma();
    case CExEv_Token::kTokenNull:
        return reduceIf(top == CExEv_Token::kTokenConst, kind);
    default:
        return stop(kErrorSyntax);
    }
}

bool CExEv::acceptOperator()
{
    if (opensOperand(m_top->kind)) {
        push();
        return true;
    }
    // Behind the operand of a unary operator nothing is folded yet: the unary operator waits for all that follows.
    const CExEv_Token *const below = m_top->next;
    const bool isBinaryBelow =
        kindOf(below) == CExEv_Token::kTokenOperator && kindOf(below->next) == CExEv_Token::kTokenConst;
    if (m_top->kind == CExEv_Token::kTokenConst && !isBinaryBelow) {
        push();
        return true;
    }
    return reduceIf(m_top->kind == CExEv_Token::kTokenConst, CExEv_Token::kTokenOperator);
}

bool CExEv::acceptComma()
{
    const int below = kindOf(m_top->next);
    return pushIf(m_top->kind == CExEv_Token::kTokenConst &&
                  (below == CExEv_Token::kTokenComma || below == CExEv_Token::kTokenFunc));
}

bool CExEv::pushIf(bool allowed)
{
    if (!allowed)
        return stop(kErrorSyntax);
    push();
    return true;
}

bool CExEv::reduceIf(bool allowed, int kind)
{
    if (!allowed)
        return stop(kErrorSyntax);
    reduce(kind);
    return m_error == kSuccess;
}

// Reducing.

void CExEv::reduce(int kind)
{
    switch (kind) {
    case CExEv_Token::kTokenCParen:
    case CExEv_Token::kTokenNull:
    case CExEv_Token::kTokenOperator:
        while (m_error == kSuccess && foldTop(kind)) {
        }
        break;
    default:
        setError(kErrorToken);
        break;
    }
}

/// Folds once; false when nothing is left to fold, or with an error.
bool CExEv::foldTop(int kind)
{
    if (!m_top)
        return stop(kErrorToken);
    CExEv_Token *const below = m_top->next;
    if (!below)
        return kind == CExEv_Token::kTokenOperator ? pushOperator() : stop(kErrorToken);
    if (m_top->kind == CExEv_Token::kTokenFunc)
        return kind == CExEv_Token::kTokenCParen ? applyFunction(*m_top, 0, nullptr) : stop(kErrorSyntax);
    if (m_top->kind != CExEv_Token::kTokenConst)
        return stop(kErrorSyntax);
    switch (below->kind) {
    case CExEv_Token::kTokenOperator:
        return kindOf(below->next) == CExEv_Token::kTokenConst ? foldBinary(kind) : foldUnary();
    case CExEv_Token::kTokenOParen:
        return closeParenthesis(kind);
    case CExEv_Token::kTokenFunc:
        return closeCall(kind);
    case CExEv_Token::kTokenNull:
        return endAtBottom(kind);
    default:
        return stop(kErrorSyntax); // a comma: no function takes more than one argument
    }
}

bool CExEv::foldBinary(int kind)
{
    CExEv_Token &operation = *m_top->next;
    CExEv_Token &left = *operation.next;
    const bool isOperator = kind == CExEv_Token::kTokenOperator && m_current;
    const int waiting = isOperator ? getOperatorPriority(nameIn(*m_current)) : 0;
    if (getOperatorPriority(nameIn(operation)) < waiting)
        return pushOperator();

    Variant value;
    Variant *operands[] = {&left, m_top};
    if (!contextInUse().callOperator(nameIn(operation), 2, operands, value))
        return stop(kErrorCall);
    pop();
    pop();
    left.becomeConst(std::move(value));
    return true;
}

/// A unary operator takes all that stands behind it, whatever the priority of the operator that waits.
bool CExEv::foldUnary()
{
    CExEv_Token &operation = *m_top->next;
    Variant value;
    Variant *operands[] = {m_top};
    if (!contextInUse().callOperator(nameIn(operation), 1, operands, value))
        return stop(kErrorUnary);
    pop();
    operation.becomeConst(std::move(value));
    return true;
}

/// Replaces \a function by what it gives; that ends the reduction.
bool CExEv::applyFunction(CExEv_Token &function, int argc, Variant **argv)
{
    Variant value;
    if (!contextInUse().callFunction(nameIn(function), argc, argv, value))
        return stop(kErrorCall);
    function.becomeConst(std::move(value));
    return false;
}

bool CExEv::closeParenthesis(int kind)
{
    if (kind == CExEv_Token::kTokenNull)
        return stop(kErrorParenthesis);
    if (kind == CExEv_Token::kTokenOperator)
        return pushOperator();
    swapTop();
    pop();
    return false;
}

bool CExEv::closeCall(int kind)
{
    if (kind != CExEv_Token::kTokenCParen)
        return stop(kErrorSyntax);
    Variant *arguments[] = {m_top};
    applyFunction(*m_top->next, 1, arguments);
    if (m_error == kSuccess)
        pop();
    return false;
}

bool CExEv::endAtBottom(int kind)
{
    if (kind == CExEv_Token::kTokenOperator)
        return pushOperator();
    return kind == CExEv_Token::kTokenNull ? false : stop(kErrorSyntax);
}

/// The operator that caused the reduction waits on the stack for its right operand; that ends the reduction.
bool CExEv::pushOperator()
{
    push();
    return false;
}

} // namespace cexev
