#pragma once

#include <veldmap/expression/evaluation_context.h>
#include <veldmap/expression/variant.h>
#include <veldmap/veldmap_export.h>

#include <cstddef>
#include <deque>
#include <string>

namespace cexev {

/// A piece of an expression: an operator, a mark or a name as it was read, or a value that was computed.
///
/// The value is the token's own Variant. The link to the next token owns nothing.
class VELDMAP_EXPORT CExEv_Token : public variant::Variant {
public:
    enum Kind : int {
        kTokenNull = 0,         ///< the end of the text, and the mark at the bottom of the stack
        kTokenUnknown = 1,      ///< text that makes no token
        kTokenConst = 0x101,    ///< holds the constant
        kTokenIdent = 0x102,    ///< holds the identifier as a String
        kTokenOParen = 0x201,   ///< an opening parenthesis
        kTokenCParen = 0x202,   ///< a closing parenthesis
        kTokenComma = 0x301,    ///< a comma
        kTokenOperator = 0x401, ///< holds the operator's symbol as a String
        kTokenFunc = 0x402,     ///< holds the name of a called function as a String
    };

    int kind = kTokenNull;
    CExEv_Token *next = nullptr; ///< the token below on the stack, or behind in the free list

    CExEv_Token();
    /// Copies kind and value; the copy is on no list.
    CExEv_Token(const CExEv_Token &other);
    ~CExEv_Token() override;
    /// Copies kind and value; this token stays on its list.
    CExEv_Token &operator=(const CExEv_Token &other);

    /// Makes this the token of no kind, with a Null value and on no list.
    void clear();
    /// Makes this the constant \a value.
    void becomeConst(variant::Variant &&value);
    /// Replaces \a out by a text that shows the token to a developer.
    void dump(std::string &out) const;
};

/// Computes the value of an expression's text in one pass, folding operands on a stack as soon as the syntax allows.
///
/// Owns its tokens and a copy of the text, and keeps both until the next evaluation, clear() or its destruction. The
/// context stays with the caller. One evaluation runs at a time: a context must not call back into the evaluator that
/// asks it. Time and memory grow linearly with the number of tokens, and nesting takes no machine stack; only texts
/// joined over and over cost a copy of the joined text each time.
/// The steps of an evaluation are open to tools and tests; evalExpression() is all that an ordinary user needs.
class VELDMAP_EXPORT CExEv : public CExEvCtx {
public:
    enum Error : int {
        kSuccess = 0,
        kErrorToken = 1,       ///< a character or literal that makes no token, or more or less than one value left
        kErrorMemory = 2,      ///< out of memory
        kErrorIdentifier = 5,  ///< the context does not know an identifier
        kErrorSyntax = 6,      ///< a token where it may not stand
        kErrorCall = 7,        ///< a binary operator or a function refused its operands
        kErrorUnary = 8,       ///< a unary operator refused its operand
        kErrorParenthesis = 9, ///< the text ends with a parenthesis open
    };

    /// An evaluator that is its own context.
    CExEv();
    /// An evaluator that asks \a meaning; see the field context.
    explicit CExEv(CExEvCtx *meaning);
    CExEv(const CExEv &) = delete;
    CExEv &operator=(const CExEv &) = delete;
    ~CExEv() override;

    /// Evaluates \a expression, which may be \a result's own text; null counts as empty. Returns 0 with the value in
    /// \a result, in the type that the expression gives it, or the first error with \a result Null.
    int evalExpression(const char *expression, variant::Variant &result);

    /// Releases the text and all tokens and forgets the error.
    void clear();
    /// Records \a code unless an error is recorded already.
    void setError(int code);
    /// The recorded error, 0 while all is well.
    int getError() const { return m_error; }
    /// The first byte of the token at which the recorded error was found, counted from the begin of the text.
    std::size_t getErrorPosition() const { return m_errorPosition; }

    /// Makes an empty current token; one that is there already is used again. Null when memory is out.
    CExEv_Token *newToken();
    /// Moves the current token, if there is one, to the top of the stack.
    void push();
    /// Moves the top of the stack, if there is one, to the free list.
    void pop();
    /// Swaps the two top tokens, if there are two.
    void swapTop();

    /// 10 for the binary operators that bind tightest down to 1 for ||; 0 for any other text.
    static int getOperatorPriority(const char *symbol);

    /// Reads one token into the current token and returns its kind, or -1 when memory is out.
    int getNextToken();
    /// Folds the top of the stack as far as a token of \a kind behind it allows: a closing parenthesis, the end (a
    /// token of no kind), or an operator, which is the current token and joins the stack in the end.
    void reduce(int kind);
    /// Does nothing.
    void dumpStack();

    /// Null lets the evaluator become its own context at the next evaluation. Not to be changed while one runs.
    CExEvCtx *context;

private:
    CExEvCtx &contextInUse() { return context ? *context : *this; }
    bool stop(int error);

    bool readToken(CExEv_Token &token);
    bool readNumber(CExEv_Token &token);
    bool readCharacter(CExEv_Token &token);
    bool readText(CExEv_Token &token);
    bool readIdentifier(CExEv_Token &token);
    bool readOperator(CExEv_Token &token);
    bool readEscaped(char &character);

    void run();
    bool step();
    bool resolveIdentifier();
    bool accept(int kind);
    bool acceptOperator();
    bool acceptComma();
    bool pushIf(bool allowed);
    bool reduceIf(bool allowed, int kind);

    bool foldTop(int kind);
    bool foldBinary(int kind);
    bool foldUnary();
    bool applyFunction(CExEv_Token &function, int argc, variant::Variant **argv);
    bool closeParenthesis(int kind);
    bool closeCall(int kind);
    bool endAtBottom(int kind);
    bool pushOperator();

    std::string m_expression;
    const char *m_position = "";  // in m_expression
    std::size_t m_tokenBegin = 0; // in m_expression, of the token that was read last
    std::size_t m_errorPosition = 0;
    CExEv_Token *m_top = nullptr;
    CExEv_Token *m_free = nullptr;
    CExEv_Token *m_current = nullptr; // on neither list
    int m_error = kSuccess;
    // Owns the tokens that the three pointers lead to. A deque never moves a token, takes memory for several at once,
    // and releases a list of any length without recursion.
    std::deque<CExEv_Token> m_tokens;
};

} // namespace cexev
