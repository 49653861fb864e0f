// SPDX-License-Identifier: MIT
#include "filesystem/xref_index.h"

#include "filesystem/path_text.h"
#include "text/character_class.h"

#include <ky/kyDirUtils.h>

#include <algorithm>

namespace ky::impl
{

namespace
{

constexpr std::size_t firstSlotCount = 1024;

bool equalsFolded(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char one, char other) { return lowerByte(one) == lowerByte(other); });
}

std::size_t hashFolded(std::string_view name)
{
    std::uint64_t hash = 0xCBF29CE484222325U; // FNV-1a
    for (const char byte : name)
        hash = (hash ^ static_cast<unsigned char>(lowerByte(byte))) * 0x100000001B3U;
    return static_cast<std::size_t>(hash ^ (hash >> 32));
}

bool isDrive(std::string_view text)
{
    const char letter = text.empty() ? '\0' : lowerByte(text[0]);
    return text.size() >= 2 && text[1] == ':' && letter >= 'a' && letter <= 'z';
}

/// Takes the prefix of a path that bypasses the system's path rules off ("\\?\", "\\?\UNC\").
std::string_view withoutLongPathPrefix(std::string_view text)
{
    if (text.size() < 4 || !isSeparator(text[0]) || !isSeparator(text[1]) || text[2] != '?' || !isSeparator(text[3]))
        return text;
    const std::string_view rest = text.substr(4);
    const bool isShare = rest.size() >= 4 && equalsFolded(rest.substr(0, 3), "unc") && isSeparator(rest[3]);
    return isShare ? rest.substr(3) : rest;
}

/// Compares components from the right, and remembers how far they agreed.
class TailMatcher
{
public:
    TailMatcher(const FileReference& reference, bool foldCase, XRefIndex::Tail& tail)
        : mComponents(reference.components()),
          mFoldCase(foldCase),
          mTail(tail)
    {
    }

    /// False at the first component that differs.
    bool next(std::string_view component)
    {
        if (mTail.common == mComponents.size())
            return false;
        const std::string_view wanted = mComponents[mComponents.size() - 1 - mTail.common];
        const bool isSame = component == wanted;
        const bool folds = mFoldCase || (component.size() == 2 && isDrive(component));
        if (!isSame && !(folds && equalsFolded(component, wanted)))
            return false;
        if (isSame && mTail.sameCase == mTail.common)
            ++mTail.sameCase;
        ++mTail.common;
        return true;
    }

private:
    const std::vector<std::string_view>& mComponents;
    bool mFoldCase;
    XRefIndex::Tail& mTail;
};

} // namespace

FileReference::FileReference(std::string_view text)
{
    constexpr std::size_t usualDepth = 16;
    mComponents.reserve(usualDepth);
    text = withoutLongPathPrefix(text);
    if (isDrive(text))
    {
        mComponents.push_back(text.substr(0, 2));
        text.remove_prefix(2);
    }
    mIsAbsolute = !text.empty() && isSeparator(text.front());
    append(text);
}

void FileReference::append(std::string_view relative)
{
    for (;;)
    {
        const std::size_t end = std::min(relative.find_first_of("/\\"), relative.size());
        add(relative.substr(0, end));
        if (end == relative.size())
            return;
        relative.remove_prefix(end + 1);
    }
}

void FileReference::add(std::string_view component)
{
    mHasFileName = false;
    if (component.empty() || component == ".")
        return;
    if (component != "..")
    {
        mComponents.push_back(component);
        mHasFileName = true;
    }
    else if (mComponents.empty() || isDrive(mComponents.back()))
        mLeadsOut = true;
    else
        mComponents.pop_back();
}

void XRefIndex::addRoot(const std::string& path)
{
    Root root;
    root.path = path;
    const std::string absolute = kyDirUtils::GetAbsolutePathUtf8(path);
    const FileReference components(absolute);
    for (const std::string_view component : components.components())
        root.components.emplace_back(component);
    mRoots.push_back(std::move(root));
}

std::uint32_t XRefIndex::addRootFolder()
{
    mRoots.back().isListed = true;
    mFolders.push_back({static_cast<std::uint32_t>(mRoots.size() - 1), none});
    return static_cast<std::uint32_t>(mFolders.size() - 1);
}

std::uint32_t XRefIndex::addFolder(std::uint32_t parent, std::string_view name)
{
    const std::uint32_t stored = addName(name);
    if (mIsFull)
        return parent;
    mFolders.push_back({stored, parent});
    return static_cast<std::uint32_t>(mFolders.size() - 1);
}

void XRefIndex::addFile(std::uint32_t folder, std::string_view name)
{
    if (2 * (mUsedSlots + 1) > mSlots.size())
        growSlots();
    std::uint32_t& slot = slotOf(name);
    const bool isKnown = slot != none;
    const std::uint32_t stored = isKnown && fileName(slot) == name ? mFiles[slot].name : addName(name);
    if (mIsFull)
        return;
    mFiles.push_back({stored, folder, slot});
    slot = static_cast<std::uint32_t>(mFiles.size() - 1);
    mUsedSlots += isKnown ? 0 : 1;
}

std::uint32_t XRefIndex::addName(std::string_view name)
{
    mIsFull = mIsFull || mNames.size() + name.size() >= none || mFiles.size() + 1 >= none;
    if (mIsFull)
        return none;
    const auto offset = static_cast<std::uint32_t>(mNames.size());
    (mNames += name) += '\0';
    return offset;
}

std::size_t XRefIndex::findSlot(std::string_view name) const
{
    std::size_t slot = hashFolded(name) & (mSlots.size() - 1);
    while (mSlots[slot] != none && !equalsFolded(fileName(mSlots[slot]), name))
        slot = (slot + 1) & (mSlots.size() - 1);
    return slot;
}

std::uint32_t& XRefIndex::slotOf(std::string_view name) { return mSlots[findSlot(name)]; }

void XRefIndex::growSlots()
{
    const std::vector<std::uint32_t> old = std::move(mSlots);
    mSlots.assign(std::max(2 * old.size(), firstSlotCount), none);
    for (const std::uint32_t file : old)
    {
        if (file != none)
            slotOf(fileName(file)) = file;
    }
}

void XRefIndex::finish()
{
    mFolders.shrink_to_fit();
    mFiles.shrink_to_fit();
    mNames.shrink_to_fit();
}

std::uint32_t XRefIndex::firstFile(std::string_view name) const
{
    return mSlots.empty() ? none : mSlots[findSlot(name)];
}

XRefIndex::Tail XRefIndex::compare(std::uint32_t file, const FileReference& reference, bool foldCase) const
{
    Tail tail;
    TailMatcher matcher(reference, foldCase, tail);
    bool agrees = matcher.next(fileName(file));
    std::uint32_t folder = mFiles[file].folder;
    for (; mFolders[folder].parent != none; folder = mFolders[folder].parent)
    {
        agrees = agrees && matcher.next(nameAt(mFolders[folder].name));
        ++tail.depth;
    }
    tail.root = mFolders[folder].name;
    const std::vector<std::string>& above = mRoots[tail.root].components;
    for (auto component = above.rbegin(); agrees && component != above.rend(); ++component)
        agrees = matcher.next(*component);
    tail.all = 1 + tail.depth + above.size();
    return tail;
}

bool XRefIndex::isBefore(std::uint32_t a, std::uint32_t b) const
{
    int order = fileName(a).compare(fileName(b));
    std::uint32_t one = mFiles[a].folder;
    std::uint32_t other = mFiles[b].folder;
    while (one != other)
    {
        const int folders = nameAt(mFolders[one].name).compare(nameAt(mFolders[other].name));
        if (folders != 0)
            order = folders;
        one = mFolders[one].parent;
        other = mFolders[other].parent;
    }
    return order < 0;
}

void XRefIndex::appendRelativePath(std::string& out, std::uint32_t file) const
{
    std::vector<std::uint32_t> folders;
    for (std::uint32_t at = mFiles[file].folder; mFolders[at].parent != none; at = mFolders[at].parent)
        folders.push_back(at);
    for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder)
        (out += nameAt(mFolders[*folder].name)) += '/';
    out += fileName(file);
}

std::size_t XRefIndex::memoryUsage() const
{
    return sizeof(*this) + mFolders.capacity() * sizeof(Folder) + mFiles.capacity() * sizeof(File) +
           mSlots.capacity() * sizeof(std::uint32_t) + mNames.capacity();
}

} // namespace ky::impl
