// SPDX-License-Identifier: MIT
// The files below some roots, by name, in little memory; and file references as documents store them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ky::impl
{

/// A path of any system, taken apart. A drive, such as "C:", counts as a component.
class FileReference
{
public:
    explicit FileReference(std::string_view text);

    /// The components of a relative path behind these.
    void append(std::string_view relative);

    /// False for an empty text and for one that ends in a separator, "." or "..".
    bool hasFileName() const { return mHasFileName; }
    bool isAbsolute() const { return mIsAbsolute; }
    bool leadsOut() const { return mLeadsOut; } ///< a ".." at its start
    const std::vector<std::string_view>& components() const { return mComponents; }

private:
    void add(std::string_view component);

    std::vector<std::string_view> mComponents; // parts of the texts given
    bool mIsAbsolute = false;
    bool mLeadsOut = false;
    bool mHasFileName = false;
};

class XRefIndex
{
public:
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    struct Root
    {
        std::string path;                    ///< as the caller gave it
        std::vector<std::string> components; ///< of the absolute path
        bool isListed = false;
    };

    struct Tail
    {
        std::size_t common = 0;    ///< components that agree, from the right
        std::size_t sameCase = 0;  ///< those of them that are spelled the same, from the right
        std::size_t depth = 0;     ///< folders between root and file
        std::uint32_t root = none; ///< number
        std::size_t all = 0;       ///< components of the file's absolute path
    };

    /// \name Filling
    /// @{
    void addRoot(const std::string& path);
    std::uint32_t addRootFolder();
    std::uint32_t addFolder(std::uint32_t parent, std::string_view name);
    void addFile(std::uint32_t folder, std::string_view name);
    bool isFull() const { return mIsFull; } ///< something could not be added
    void finish();                          ///< gives back the memory that is not needed
    /// @}

    /// The first of the files with this name, A-Z folded; `none` when there is none. nextFile() gives the others.
    std::uint32_t firstFile(std::string_view name) const;
    std::uint32_t nextFile(std::uint32_t file) const { return mFiles[file].next; }

    std::string_view fileName(std::uint32_t file) const { return nameAt(mFiles[file].name); }
    Tail compare(std::uint32_t file, const FileReference& reference, bool foldCase) const;

    /// Orders files of one root and depth by the names of their folders from the root down, then by their own.
    bool isBefore(std::uint32_t a, std::uint32_t b) const;

    /// Below the root; '/' between components.
    void appendRelativePath(std::string& out, std::uint32_t file) const;

    const std::vector<Root>& roots() const { return mRoots; }
    std::size_t fileCount() const { return mFiles.size(); }
    std::size_t folderCount() const { return mFolders.size(); }
    std::size_t memoryUsage() const;

private:
    struct Folder
    {
        std::uint32_t name;   // of a root: its number
        std::uint32_t parent; // of a root: none
    };
    struct File
    {
        std::uint32_t name;
        std::uint32_t folder;
        std::uint32_t next; // of the same name, A-Z folded
    };

    std::string_view nameAt(std::uint32_t offset) const { return mNames.data() + offset; }
    std::uint32_t addName(std::string_view name);
    std::uint32_t& slotOf(std::string_view name);
    std::size_t findSlot(std::string_view name) const;
    void growSlots();

    std::vector<Root> mRoots;
    std::vector<Folder> mFolders;
    std::vector<File> mFiles;
    std::vector<std::uint32_t> mSlots; // open addressing: a file of each name
    std::string mNames;                // each ends with a NUL
    std::size_t mUsedSlots = 0;
    bool mIsFull = false;
};

} // namespace ky::impl
