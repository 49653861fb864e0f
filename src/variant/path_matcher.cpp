// SPDX-License-Identifier: MIT
#include "variant/path_pattern.h"

#include <algorithm>
#include <locale>
#include <string_view>

namespace ky::impl
{
namespace
{

constexpr std::size_t kMaximumRecursivePath = 1000;

/// A count or the number of a group that the standard library would compute beyond the range of its integers.
bool holdsHugeNumber(std::string_view pattern)
{
    constexpr std::size_t mostDigits = 9;
    constexpr std::string_view digits = "0123456789";
    bool inSet = false;
    bool inBraces = false;
    for (std::size_t i = 0; i < pattern.size(); ++i)
    {
        const bool isEscape = pattern[i] == '\\' && i + 1 < pattern.size();
        const char c = pattern[isEscape ? ++i : i];
        if ((isEscape ? !inSet : inBraces) && digits.find(c) != std::string_view::npos)
        {
            const std::size_t end = std::min(pattern.find_first_not_of(digits, i), pattern.size());
            if (end - std::min(pattern.find_first_not_of('0', i), end) > mostDigits)
                return true;
            i = end - 1;
        }
        else if (!isEscape)
        {
            inBraces = !inSet && (c == '{' || (inBraces && c != '}'));
            inSet = inSet ? c != ']' : c == '[';
        }
    }
    return false;
}

std::regex compileRegex(const std::string& pattern, bool caseInsensitive)
{
    if (holdsHugeNumber(pattern))
        throw std::regex_error(std::regex_constants::error_badbrace);
    std::regex::flag_type flags = std::regex::ECMAScript | std::regex::nosubs;
    if (caseInsensitive)
        flags |= std::regex::icase;
    std::regex regex;
    regex.imbue(std::locale::classic());
    regex.assign(pattern, flags);
    return regex;
}

} // namespace

PathMatcher::PathMatcher(const std::string& pattern, bool caseInsensitive)
    : automatic_(automaton_.compile(pattern, caseInsensitive))
{
    // The automaton declines whatever is malformed, too.
    if (automatic_)
        restart();
    else
        regex_ = compileRegex(pattern, caseInsensitive);
}

void PathMatcher::restart()
{
    seen_.assign(automaton_.code().size(), 0);
    ++closure_;
    close(0, true, false);
    current_.swap(next_);
    states_ = current_;
}

PathMatcher::Mark PathMatcher::mark() const noexcept
{
    return automatic_ ? Mark{begin_, states_.size()} : Mark{0, path_.size()};
}

void PathMatcher::rewind(Mark mark)
{
    if (!automatic_)
    {
        path_.resize(mark.end);
        return;
    }
    begin_ = mark.begin;
    states_.resize(mark.end);
}

void PathMatcher::append(std::string_view text)
{
    if (!automatic_)
    {
        path_ += text;
        return;
    }
    if (text.empty())
        return;
    current_.assign(states_.begin() + static_cast<std::ptrdiff_t>(begin_), states_.end());
    for (std::size_t i = 0; i < text.size() && !current_.empty(); ++i)
        step(static_cast<unsigned char>(text[i]));
    begin_ = states_.size();
    states_.insert(states_.end(), current_.begin(), current_.end());
}

void PathMatcher::step(unsigned char byte)
{
    next_.clear();
    ++closure_;
    for (const std::uint32_t state : current_)
    {
        const PathAutomaton::Instruction& instruction = automaton_.code()[state];
        if (instruction.kind == PathAutomaton::Kind::Bytes && automaton_.bytes(instruction.set)[byte])
            close(state + 1, false, false);
    }
    current_.swap(next_);
}

/// Adds to next_ every state that consumes, ends or accepts and that is reached from `state` without a byte.
void PathMatcher::close(std::uint32_t state, bool atBegin, bool atEnd)
{
    using Kind = PathAutomaton::Kind;
    open_.push_back(state);
    while (!open_.empty())
    {
        const std::uint32_t at = open_.back();
        open_.pop_back();
        if (seen_[at] == closure_)
            continue;
        seen_[at] = closure_;
        const PathAutomaton::Instruction& instruction = automaton_.code()[at];
        const auto target = [at](std::int32_t offset)
        { return static_cast<std::uint32_t>(static_cast<std::int64_t>(at) + offset); };
        switch (instruction.kind)
        {
        case Kind::Split: open_.push_back(target(instruction.second)); [[fallthrough]];
        case Kind::Jump: open_.push_back(target(instruction.first)); break;
        case Kind::Begin:
            if (atBegin)
                open_.push_back(at + 1);
            break;
        case Kind::End:
            if (atEnd)
                open_.push_back(at + 1);
            next_.push_back(at);
            break;
        default: next_.push_back(at); break;
        }
    }
}

bool PathMatcher::matches()
{
    using Kind = PathAutomaton::Kind;
    if (!automatic_)
    {
        if (path_.size() > kMaximumRecursivePath)
            throw std::regex_error(std::regex_constants::error_stack);
        return std::regex_match(path_, *regex_);
    }
    const bool empty = begin_ == 0; // the only set that no byte has led to
    next_.clear();
    ++closure_;
    for (std::size_t i = begin_; i < states_.size(); ++i)
    {
        const Kind kind = automaton_.code()[states_[i]].kind;
        if (kind == Kind::Accept)
            return true;
        if (kind == Kind::End)
            close(states_[i], empty, true);
    }
    return std::any_of(next_.begin(), next_.end(),
                       [this](std::uint32_t state) { return automaton_.code()[state].kind == Kind::Accept; });
}

bool PathMatcher::hopeless() const noexcept { return automatic_ && begin_ == states_.size(); }

} // namespace ky::impl
