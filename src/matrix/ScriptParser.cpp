// SPDX-License-Identifier: GPL-3.0-or-later
// Recursive descent over the characters of the script, with the usual precedence:
// "+ -" below "* /" below unary minus below "^" (right-associative, so 2^-1 and -x^2 read
// as in mathematics).
#include "ScriptParser.h"

#include <algorithm>
#include <cmath>

namespace MatrixScript {

ScriptError::ScriptError(Status status, int position, const QString& message)
    : std::runtime_error(message.toStdString()), m_status(status), m_position(position), m_message(message)
{
}

const char* OperatorText(BinaryOp op)
{
    switch (op) {
    case BinaryOp::Add:
        return "+";
    case BinaryOp::Subtract:
        return "-";
    case BinaryOp::Multiply:
        return "*";
    case BinaryOp::Divide:
        return "/";
    case BinaryOp::Power:
        return "^";
    }
    return "?";
}

namespace {

struct FunctionInfo
{
    const char* name;
    Function function;
    int arguments;
};

constexpr FunctionInfo Functions[] = {
    {"cols", Function::Cols, 3},   {"max", Function::Max, 1},   {"min", Function::Min, 1},
    {"max_at", Function::MaxAt, 1}, {"min_at", Function::MinAt, 1}, {"mean", Function::Mean, 1},
    {"sum", Function::Sum, 1},     {"count", Function::Count, 1},
};

// Deep expressions such as "((((...))))" end in an error rather than a stack overflow.
constexpr int MaxDepth = 200;
constexpr int MaxTreeDepth = 2000;

class Parser
{
public:
    explicit Parser(QStringView text) : m_text(text) {}

    std::unique_ptr<Program> ParseScript()
    {
        auto program = std::make_unique<Program>();
        SkipBlanks();
        program->targetPosition = Position();
        if (!StartsIdentifier())
            Fail(QStringLiteral("expected the name of the result variable"));
        program->target = Identifier();
        SkipBlanks();
        if (!Accept(u'='))
            Fail(QStringLiteral("expected \"=\" after \"%1\"").arg(program->target));
        program->expression = Expression();
        SkipBlanks();
        if (!AtEnd())
            Fail(QStringLiteral("unexpected \"%1\"").arg(m_text[m_pos]));
        return program;
    }

private:
    std::unique_ptr<Node> Expression()
    {
        const DepthGuard guard(*this);
        auto left = Term();
        for (;;) {
            SkipBlanks();
            const int position = Position();
            if (Accept(u'+'))
                left = Binary(BinaryOp::Add, std::move(left), Term(), position);
            else if (Accept(u'-'))
                left = Binary(BinaryOp::Subtract, std::move(left), Term(), position);
            else
                return left;
        }
    }

    std::unique_ptr<Node> Term()
    {
        auto left = Unary();
        for (;;) {
            SkipBlanks();
            const int position = Position();
            if (Accept(u'*'))
                left = Binary(BinaryOp::Multiply, std::move(left), Unary(), position);
            else if (Accept(u'/'))
                left = Binary(BinaryOp::Divide, std::move(left), Unary(), position);
            else
                return left;
        }
    }

    std::unique_ptr<Node> Unary()
    {
        const DepthGuard guard(*this);
        SkipBlanks();
        const int position = Position();
        if (Accept(u'+'))
            return Unary();
        if (Accept(u'-')) {
            auto node = MakeNode(Node::Kind::Negate, position);
            node->children.push_back(Unary());
            node->depth = node->children.front()->depth + 1;
            return node;
        }
        return Power();
    }

    std::unique_ptr<Node> Power()
    {
        auto base = Primary();
        SkipBlanks();
        const int position = Position();
        if (Accept(u'^'))
            return Binary(BinaryOp::Power, std::move(base), Unary(), position);
        return base;
    }

    std::unique_ptr<Node> Primary()
    {
        SkipBlanks();
        const int position = Position();
        if (AtEnd())
            Fail(QStringLiteral("expected an expression at the end of the script"));
        if (Accept(u'(')) {
            auto inner = Expression();
            Expect(u')');
            return inner;
        }
        if (StartsNumber())
            return Number();
        if (StartsIdentifier()) {
            const QString name = Identifier();
            SkipBlanks();
            if (Accept(u'('))
                return Call(name, position);
            auto node = MakeNode(Node::Kind::Variable, position);
            node->name = name;
            return node;
        }
        Fail(QStringLiteral("expected an expression, found \"%1\"").arg(m_text[m_pos]));
    }

    std::unique_ptr<Node> Call(const QString& name, int position)
    {
        const FunctionInfo* info = nullptr;
        for (const FunctionInfo& candidate : Functions)
            if (name.compare(QLatin1String(candidate.name), Qt::CaseInsensitive) == 0)
                info = &candidate;
        if (!info)
            throw ScriptError(Status::UnknownName, position, QStringLiteral("unknown function \"%1\"").arg(name));
        auto node = MakeNode(Node::Kind::Call, position);
        node->name = name;
        node->function = info->function;
        SkipBlanks();
        if (!Accept(u')')) {
            do {
                SkipBlanks();
                const qsizetype start = m_pos;
                node->children.push_back(Expression());
                if (node->children.size() == 1)
                    node->argumentText = m_text.sliced(start, m_pos - start).trimmed().toString();
            } while (Accept(u','));
            Expect(u')');
        }
        for (const auto& child : node->children)
            node->depth = std::max(node->depth, child->depth + 1);
        if (node->depth > MaxTreeDepth)
            throw ScriptError(Status::Syntax, position, QStringLiteral("expression too long"));
        if (static_cast<int>(node->children.size()) != info->arguments)
            throw ScriptError(Status::Syntax, position,
                              QStringLiteral("%1 takes %2 argument(s), not %3")
                                  .arg(QLatin1String(info->name))
                                  .arg(info->arguments)
                                  .arg(node->children.size()));
        return node;
    }

    std::unique_ptr<Node> Number()
    {
        const int position = Position();
        const qsizetype start = m_pos;
        while (!AtEnd() && IsDigit(m_text[m_pos]))
            ++m_pos;
        if (!AtEnd() && m_text[m_pos] == u'.') {
            ++m_pos;
            while (!AtEnd() && IsDigit(m_text[m_pos]))
                ++m_pos;
        }
        if (!AtEnd() && (m_text[m_pos] == u'e' || m_text[m_pos] == u'E')) {
            qsizetype exponent = m_pos + 1;
            if (exponent < m_text.size() && (m_text[exponent] == u'+' || m_text[exponent] == u'-'))
                ++exponent;
            if (exponent < m_text.size() && IsDigit(m_text[exponent])) {
                m_pos = exponent;
                while (!AtEnd() && IsDigit(m_text[m_pos]))
                    ++m_pos;
            }
        }
        bool ok = false;
        const double value = m_text.sliced(start, m_pos - start).toDouble(&ok);
        if (!ok || !std::isfinite(value))
            throw ScriptError(Status::Syntax, position,
                              QStringLiteral("invalid number \"%1\"").arg(m_text.sliced(start, m_pos - start)));
        auto node = MakeNode(Node::Kind::Number, position);
        node->number = value;
        return node;
    }

    static std::unique_ptr<Node> Binary(BinaryOp op, std::unique_ptr<Node> left, std::unique_ptr<Node> right,
                                        int position)
    {
        // Long chains such as "A + B + ... " nest to the left; their depth is bounded as well,
        // since evaluation recurses over the tree.
        const int depth = std::max(left->depth, right->depth) + 1;
        if (depth > MaxTreeDepth)
            throw ScriptError(Status::Syntax, position, QStringLiteral("expression too long"));
        auto node = MakeNode(Node::Kind::Binary, position);
        node->depth = depth;
        node->op = op;
        node->children.push_back(std::move(left));
        node->children.push_back(std::move(right));
        return node;
    }

    static std::unique_ptr<Node> MakeNode(Node::Kind kind, int position)
    {
        auto node = std::make_unique<Node>();
        node->kind = kind;
        node->position = position;
        return node;
    }

    QString Identifier()
    {
        const qsizetype start = m_pos;
        while (!AtEnd() && (IsLetter(m_text[m_pos]) || IsDigit(m_text[m_pos])))
            ++m_pos;
        return m_text.sliced(start, m_pos - start).toString();
    }

    void Expect(char16_t c)
    {
        SkipBlanks();
        if (!Accept(c)) {
            if (AtEnd())
                Fail(QStringLiteral("expected \"%1\" at the end of the script").arg(QChar(c)));
            Fail(QStringLiteral("expected \"%1\", found \"%2\"").arg(QChar(c), m_text[m_pos]));
        }
    }

    bool Accept(char16_t c)
    {
        SkipBlanks();
        if (AtEnd() || m_text[m_pos] != c)
            return false;
        ++m_pos;
        return true;
    }

    void SkipBlanks()
    {
        while (!AtEnd() && (m_text[m_pos] == u' ' || m_text[m_pos] == u'\t' || m_text[m_pos] == u'\r'
                            || m_text[m_pos] == u'\n'))
            ++m_pos;
    }

    [[noreturn]] void Fail(const QString& message) const
    {
        throw ScriptError(Status::Syntax, Position(), message);
    }

    bool StartsIdentifier() const { return !AtEnd() && IsLetter(m_text[m_pos]); }
    bool StartsNumber() const
    {
        if (AtEnd())
            return false;
        if (IsDigit(m_text[m_pos]))
            return true;
        return m_text[m_pos] == u'.' && m_pos + 1 < m_text.size() && IsDigit(m_text[m_pos + 1]);
    }
    bool AtEnd() const { return m_pos >= m_text.size(); }
    int Position() const { return static_cast<int>(m_pos) + 1; }

    static bool IsDigit(QChar c) { return c >= u'0' && c <= u'9'; }
    static bool IsLetter(QChar c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_'; }

    struct DepthGuard
    {
        explicit DepthGuard(Parser& parser) : m_parser(parser)
        {
            if (++m_parser.m_depth > MaxDepth)
                m_parser.Fail(QStringLiteral("expression nested too deeply"));
        }
        ~DepthGuard() { --m_parser.m_depth; }
        Parser& m_parser;
    };

    QStringView m_text;
    qsizetype m_pos = 0;
    int m_depth = 0;
};

} // namespace

std::unique_ptr<Program> Parse(QStringView script)
{
    return Parser(script).ParseScript();
}

} // namespace MatrixScript
