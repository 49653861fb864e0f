// SPDX-License-Identifier: MIT
// A regular expression that is matched along the paths of a tree.
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

namespace ky::impl
{

/// An automaton for the regular part of ECMAScript syntax. Offsets are relative, so that code can be moved and
/// repeated.
class PathAutomaton
{
public:
    enum class Kind : std::uint8_t
    {
        Bytes, ///< consumes one byte of a set
        Split, ///< goes on at both offsets
        Jump,  ///< goes on at the first offset
        Begin, ///< holds before the first byte only
        End,   ///< holds behind the last byte only
        Accept
    };
    struct Instruction
    {
        Kind kind;
        std::int32_t first;
        std::int32_t second;
        std::uint32_t set;
    };
    using Bytes = std::bitset<256>;

    /// False if the pattern needs more than an automaton (look-ahead, word boundaries, named classes), becomes too
    /// large or is not well-formed.
    bool compile(std::string_view pattern, bool caseInsensitive);

    [[nodiscard]] const std::vector<Instruction>& code() const noexcept { return code_; }
    [[nodiscard]] const Bytes& bytes(std::uint32_t set) const noexcept { return sets_[set]; }

private:
    bool parseAlternatives(int depth);
    bool parseTerm(int depth);
    bool parseAtom(int depth);
    bool parseEscape(Bytes& out, bool inClass);
    bool parseClass();
    bool parseQuantifier(std::size_t start);
    bool parseBraces(std::size_t& minimum, std::size_t& maximum);
    bool repeat(std::size_t start, std::size_t minimum, std::size_t maximum);
    void star(std::size_t start);
    void optional(std::size_t start);
    bool emitBytes(const Bytes& set, bool negated);
    [[nodiscard]] bool atEnd() const noexcept { return at_ == pattern_.size(); }
    [[nodiscard]] char peek() const noexcept { return atEnd() ? '\0' : pattern_[at_]; }
    bool take(char c) noexcept;

    std::string_view pattern_;
    std::size_t at_ = 0;
    bool caseInsensitive_ = false;
    std::vector<Instruction> code_;
    std::vector<Bytes> sets_;
};

/// A path that grows and shrinks with the walk through a tree, and whether the pattern matches all of it.
///
/// As a rule only the states of the automaton are kept, so that a step costs the length of its key, whatever stands
/// above, and needs no stack. Patterns beyond the automaton go through std::regex, which recurses along the text: there
/// a path of more than 1000 bytes raises std::regex_error with error_stack.
class PathMatcher
{
public:
    /// Throws std::regex_error for a malformed pattern.
    PathMatcher(const std::string& pattern, bool caseInsensitive);

    struct Mark
    {
        std::size_t begin;
        std::size_t end;
    };
    [[nodiscard]] Mark mark() const noexcept;
    /// Back to a path that was current before.
    void rewind(Mark mark);
    void append(std::string_view text);
    /// Whether the pattern matches the current path.
    [[nodiscard]] bool matches();
    /// Whether the pattern is left to the automaton.
    [[nodiscard]] bool isAutomatic() const noexcept { return automatic_; }
    /// Whether no longer path can match either.
    [[nodiscard]] bool hopeless() const noexcept;

private:
    void restart();
    void step(unsigned char byte);
    void close(std::uint32_t state, bool atBegin, bool atEnd);

    PathAutomaton automaton_;
    bool automatic_;
    std::optional<std::regex> regex_;   ///< without the automaton
    std::string path_;                  ///< without the automaton
    std::vector<std::uint32_t> states_; ///< state sets of the current path and of those above it
    std::size_t begin_ = 0;             ///< of the current set
    std::vector<std::uint32_t> current_;
    std::vector<std::uint32_t> next_;
    std::vector<std::uint32_t> open_;
    std::vector<std::uint64_t> seen_; ///< by state: the number of the closure that has reached it
    std::uint64_t closure_ = 0;
};

} // namespace ky::impl
