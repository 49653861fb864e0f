// SPDX-License-Identifier: MIT
#include "variant/path_pattern.h"

#include "text/character_class.h"

#include <limits>

namespace ky::impl
{
namespace
{

constexpr std::size_t kMaximumCode = 20000; // beyond what the pattern spells out itself
constexpr int kMaximumDepth = 200;
constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
bool isLetter(char c) noexcept { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
std::size_t indexOf(char c) noexcept { return static_cast<unsigned char>(c); }
char otherCase(char c) noexcept { return isLetter(c) ? static_cast<char>(c ^ 0x20) : c; }

/// The bytes of \d, \w or \s.
PathAutomaton::Bytes bytesOfClass(char name)
{
    PathAutomaton::Bytes out;
    for (int i = 0; i < 128; ++i)
    {
        const char c = static_cast<char>(i);
        const bool word = isDigit(c) || isLetter(c) || c == '_';
        out[indexOf(c)] = name == 'd' ? isDigit(c) : (name == 'w' ? word : isSpace(c));
    }
    return out;
}

} // namespace

bool PathAutomaton::take(char c) noexcept
{
    if (atEnd() || pattern_[at_] != c)
        return false;
    ++at_;
    return true;
}

bool PathAutomaton::compile(std::string_view pattern, bool caseInsensitive)
{
    pattern_ = pattern;
    caseInsensitive_ = caseInsensitive;
    const bool complete = parseAlternatives(0) && atEnd();
    code_.push_back({Kind::Accept, 0, 0, 0});
    pattern_ = {};
    return complete;
}

bool PathAutomaton::parseAlternatives(int depth)
{
    if (depth > kMaximumDepth)
        return false;
    std::vector<std::size_t> jumps;
    for (;;)
    {
        const std::size_t start = code_.size();
        while (!atEnd() && peek() != '|' && peek() != ')')
        {
            if (!parseTerm(depth))
                return false;
        }
        if (!take('|'))
            break;
        const auto length = static_cast<std::int32_t>(code_.size() - start);
        code_.insert(code_.begin() + static_cast<std::ptrdiff_t>(start), {Kind::Split, 1, length + 2, 0});
        jumps.push_back(code_.size());
        code_.push_back({Kind::Jump, 0, 0, 0});
    }
    for (const std::size_t jump : jumps)
        code_[jump].first = static_cast<std::int32_t>(code_.size() - jump);
    return true;
}

bool PathAutomaton::parseTerm(int depth)
{
    if (peek() == '^' || peek() == '$')
    {
        code_.push_back({peek() == '^' ? Kind::Begin : Kind::End, 1, 0, 0});
        ++at_;
        return true;
    }
    const std::size_t start = code_.size();
    return parseAtom(depth) && parseQuantifier(start) && code_.size() <= kMaximumCode + 2 * pattern_.size();
}

bool PathAutomaton::parseAtom(int depth)
{
    const char c = peek();
    ++at_;
    Bytes set;
    switch (c)
    {
    case '(':
        if (take('?') && !take(':'))
            return false;
        return parseAlternatives(depth + 1) && take(')');
    case '[': return parseClass();
    case '.': set.set(indexOf('\n')).set(indexOf('\r')); return emitBytes(set, true);
    case '\\': return parseEscape(set, false) && emitBytes(set, false);
    case '*':
    case '+':
    case '?':
    case '{':
    case ')':
    case '\0': return false;
    default: set.set(indexOf(c)); return emitBytes(set, false);
    }
}

/// Behind the backslash. Only what every implementation reads alike.
bool PathAutomaton::parseEscape(Bytes& out, bool inClass)
{
    const char c = peek();
    ++at_;
    switch (c)
    {
    case 'd':
    case 'w':
    case 's': out |= bytesOfClass(c); return true;
    case 'D':
    case 'W':
    case 'S': out |= ~bytesOfClass(otherCase(c)); return !inClass;
    case 'f': out.set(indexOf('\f')); return true;
    case 'n': out.set(indexOf('\n')); return true;
    case 'r': out.set(indexOf('\r')); return true;
    case 't': out.set(indexOf('\t')); return true;
    case 'v': out.set(indexOf('\v')); return true;
    default: out.set(indexOf(c)); return c != '\0' && c != '_' && !isDigit(c) && !isLetter(c);
    }
}

bool PathAutomaton::parseClass()
{
    const bool negated = take('^');
    Bytes set;
    for (bool first = true; !take(']'); first = false)
    {
        if (atEnd() || peek() == '[')
            return false;
        const char low = peek();
        ++at_;
        if (low == '\\')
        {
            if (!parseEscape(set, true) || peek() == '-')
                return false;
            continue;
        }
        if (low == '-' && !first && peek() != ']')
            return false;
        set.set(indexOf(low));
        if (low == '-' || !take('-'))
            continue;
        const char high = peek();
        if (high == ']')
        {
            set.set(indexOf('-'));
            continue;
        }
        if (atEnd() || high == '\\' || high == '[' || high == '-' || indexOf(high) > 127 ||
            indexOf(low) > indexOf(high))
            return false;
        ++at_;
        for (std::size_t i = indexOf(low); i <= indexOf(high); ++i)
            set.set(i);
        if (peek() == '-')
            return false;
    }
    return emitBytes(set, negated);
}

bool PathAutomaton::emitBytes(const Bytes& set, bool negated)
{
    Bytes out = set;
    if (caseInsensitive_)
    {
        for (std::size_t i = 0; i < 128; ++i)
        {
            if (set[i])
                out.set(indexOf(otherCase(static_cast<char>(i))));
        }
    }
    sets_.push_back(negated ? ~out : out);
    code_.push_back({Kind::Bytes, 1, 0, static_cast<std::uint32_t>(sets_.size() - 1)});
    return true;
}

bool PathAutomaton::parseQuantifier(std::size_t start)
{
    std::size_t minimum = 0;
    std::size_t maximum = kUnlimited;
    if (take('+'))
        minimum = 1;
    else if (take('?'))
        maximum = 1;
    else if (take('{'))
    {
        if (!parseBraces(minimum, maximum))
            return false;
    }
    else if (!take('*'))
        return true;
    // Greedy or not makes no difference for a match of the whole.
    take('?');
    const char next = peek();
    return next != '*' && next != '+' && next != '?' && next != '{' && repeat(start, minimum, maximum);
}

bool PathAutomaton::parseBraces(std::size_t& minimum, std::size_t& maximum)
{
    const auto number = [this](std::size_t& out)
    {
        const std::size_t from = at_;
        for (out = 0; isDigit(peek()) && out < kMaximumCode; ++at_)
            out = out * 10 + static_cast<std::size_t>(peek() - '0');
        return at_ != from;
    };
    if (!number(minimum))
        return false;
    maximum = minimum;
    if (take(',') && !number(maximum))
        maximum = kUnlimited;
    return take('}') && minimum <= maximum;
}

void PathAutomaton::star(std::size_t start)
{
    const auto length = static_cast<std::int32_t>(code_.size() - start);
    code_.insert(code_.begin() + static_cast<std::ptrdiff_t>(start), {Kind::Split, 1, length + 2, 0});
    code_.push_back({Kind::Jump, -(length + 1), 0, 0});
}

void PathAutomaton::optional(std::size_t start)
{
    const auto length = static_cast<std::int32_t>(code_.size() - start);
    code_.insert(code_.begin() + static_cast<std::ptrdiff_t>(start), {Kind::Split, 1, length + 1, 0});
}

/// Replaces the code from `start` on by its repetition.
bool PathAutomaton::repeat(std::size_t start, std::size_t minimum, std::size_t maximum)
{
    const std::vector<Instruction> once(code_.begin() + static_cast<std::ptrdiff_t>(start), code_.end());
    const std::size_t copies = maximum == kUnlimited ? minimum + 1 : maximum;
    if (copies > kMaximumCode || (copies > 1 && copies * (once.size() + 1) > kMaximumCode))
        return false;
    code_.resize(start);
    for (std::size_t i = 0; i < copies; ++i)
    {
        const std::size_t copy = code_.size();
        code_.insert(code_.end(), once.begin(), once.end());
        if (i >= minimum)
            maximum == kUnlimited ? star(copy) : optional(copy);
    }
    return true;
}

} // namespace ky::impl
