// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace ky::tool
{

/// Cuts bytes that arrive in pieces into lines, and hands each to `use` without its line feed or CR LF.
class LineCutter
{
public:
    template <typename Use>
    void add(std::string_view bytes, const Use& use)
    {
        for (std::size_t end = bytes.find('\n'); end != std::string_view::npos; end = bytes.find('\n'))
        {
            mLine.append(bytes.substr(0, end));
            hand(use);
            bytes.remove_prefix(end + 1);
        }
        mLine.append(bytes);
    }

    /// A last line without an end.
    template <typename Use>
    void finish(const Use& use)
    {
        if (!mLine.empty())
            hand(use);
    }

private:
    template <typename Use>
    void hand(const Use& use)
    {
        if (!mLine.empty() && mLine.back() == '\r')
            mLine.pop_back();
        use(std::as_const(mLine));
        mLine.clear();
    }

    std::string mLine;
};

} // namespace ky::tool
