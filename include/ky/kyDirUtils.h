// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyExport.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ky
{

/// What the file system tells about one path.
struct KY_API kyFileInfoUtf8
{
    std::string path;              ///< as the caller gave it
    std::int64_t lastAccess = 0;   ///< seconds since 1970-01-01 UTC
    std::int64_t creation = 0;     ///< the same; on Linux the time of the last status change
    std::int64_t lastModified = 0; ///< the same
    std::int64_t size = 0;         ///< bytes
    bool exists : 1;               ///< the query succeeded
    bool typed : 1;                ///< the status holds a file type: true of files and folders alike
    bool folder : 1;               ///< it is a folder

    /// Empty path, zeros, no flag set.
    kyFileInfoUtf8();

    /// Back to the state of a new record.
    void clearInfos();

    /// Whether all members are equal.
    /// @{
    [[nodiscard]] bool operator==(const kyFileInfoUtf8& other) const;
    [[nodiscard]] bool operator!=(const kyFileInfoUtf8& other) const { return !(*this == other); }
};

/// Path texts, operations on files and folders, and walks through folders.
///
/// All texts are UTF-8. Both '/' and '\' are taken as separators; '/' is what is written, unless a function says
/// otherwise. On Linux the functions that act on the file system translate every '\' of a path that the caller passes;
/// names that the system lists are never translated.
///
/// Nothing is logged. Functions report by their result; only running out of memory throws. All functions may be called
/// from several threads at once.
class KY_API kyDirUtils
{
public:
    kyDirUtils() = delete;

    /// \name Path texts
    /// They never touch the file system. Nothing is trimmed, doubled separators are not collapsed, '.' and '..' are
    /// ordinary names.
    /// @{

    /// `a` and `b` with one separator between them: a '/' is inserted when neither has one there, and the first
    /// character of `b` is dropped when both have. An empty operand gives the other one.
    [[nodiscard]] static std::string JoinPath(const std::string& a, const std::string& b);
    /// Three parts, joined from the left.
    [[nodiscard]] static std::string JoinPath(const std::string& a, const std::string& b, const std::string& c);
    /// Four parts, joined from the left.
    [[nodiscard]] static std::string JoinPath(const std::string& a, const std::string& b, const std::string& c,
                                              const std::string& d);

    /// The text behind the last dot of the file name, A-Z in lower case; empty when there is none. A leading dot counts
    /// only below a folder: ".profile" has no extension, "dir/.profile" has "profile".
    [[nodiscard]] static std::string ExtractFileExtension(const std::string& path);

    /// Each of the bytes `" * / : < > ? \ |` gives way to `replacement`. Control characters, dots and blanks at the end
    /// and names of devices stay.
    [[nodiscard]] static std::string GenerateValidFileName(const std::string& name, char replacement);
    /// The same in place.
    static void GenerateValidFileName(std::string& name, char replacement);

    /// Cuts at the last separator, which goes to neither part. Without one `folder` becomes empty. The parts keep the
    /// separators of `path`. The outputs may be `path` itself.
    static void SplitFolderFilename(const std::string& path, std::string& folder, std::string& fileName);

    /// The part before the last separator, every '\' in it turned into '/'; empty when there is no separator.
    [[nodiscard]] static std::string ExtractFolder(const std::string& path);

    /// The file name without its last extension. A name that begins with its only dot gives an empty text.
    [[nodiscard]] static std::string ExtractFileBaseName(const std::string& path);

    /// The path without its last piece. Only '/' separates here, '\' does not; one '/' at the end is ignored: "a/b/"
    /// gives "a", a path of a single piece an empty text.
    [[nodiscard]] static std::string GetParentPathUtf8(const std::string& path);
    /// @}

    /// \name Paths as the system sees them
    /// @{

    /// False for a path that begins with '\' or has a ':' as its second character; on Linux also for one that begins
    /// with '/'. (Windows calls a path such as "/a" relative, because it lacks a drive.)
    [[nodiscard]] static bool IsPathRelativeUtf8(const std::string& path);

    /// True for a path that begins with two '\', and for one on a drive (on Linux: below a mount) of the network.
    [[nodiscard]] static bool IsNetworkPath(const std::string& path);

    /// The path from the root on, '/'-separated; single and double dots and doubled separators are resolved in the
    /// text, links are not. A separator at the end stays. Empty for an empty path, on Windows also for a result of
    /// 4096 characters or more.
    [[nodiscard]] static std::string GetAbsolutePathUtf8(const std::string& path);

    /// The path with each component spelled as it is stored, '/'-separated; a drive letter in upper case. A component
    /// that is not found stays as it was typed. Windows: the shell's display names. Linux: the component itself when it
    /// exists, else the first one in byte order that differs in case only.
    [[nodiscard]] static std::string GetActualPathNameUtf8(const std::string& path);
    /// @}

    /// \name Files
    /// @{

    /// Whether something of this name exists: a folder counts as well. A link counts when what it leads to exists.
    [[nodiscard]] static bool FileExistsUtf8(const std::string& path);

    /// Whether this is a folder, or a link to one.
    [[nodiscard]] static bool DirExistsUtf8(const std::string& path);

    /// Fills the record; see kyFileInfoUtf8. When the query fails only the path is set.
    /// \return whether the query succeeded, as the record's `exists`
    static bool GetFileInfoUtf8(const std::string& path, kyFileInfoUtf8& info);

    /// Copies a file with its permissions and times. An existing destination is replaced only with `overwrite`. The
    /// final name never holds half a copy. A file is not copied onto itself.
    static bool CopyFileUtf8(const std::string& source, const std::string& destination, bool overwrite);

    /// Renames or moves a file or folder; a file to another volume too. A file takes the place of an existing file, but
    /// nothing takes that of a folder. On failure `error`, unless null, becomes "MoveFileExW error " and the code of
    /// the system.
    static bool RenameFileUtf8(const std::string& oldPath, const std::string& newPath, std::string* error = nullptr);

    /// Removes a file, not a folder. A link is removed itself.
    static bool RemoveFileUtf8(const std::string& path);
    /// @}

    /// \name Folders
    /// @{

    /// Makes every missing folder of the path. True when all exist in the end, and for an empty path. False when one of
    /// them is a file. On Windows the text goes to the narrow system calls as it is, that is in the active code page.
    static bool MkpathUtf8(const std::string& path);

    /// Removes everything in the folder, and with `removeFolder` the folder. Links are removed, never entered. The
    /// first thing that cannot be removed ends the work, and so does a folder that is itself a link. True when the
    /// folder is missing.
    ///
    /// \param error unless null, emptied first, then set to the first failure: "FindFirstFileW error ",
    ///        "DeleteFileW error " or "RemoveDirectoryW error ", the code of the system, " for " and the path;
    ///        "Canceled" when canceled
    /// \param cancel may be null. Read once, before the work begins; when set, at most one entry is removed.
    static bool ClearFolderUtf8(const std::string& path, bool removeFolder, std::string* error = nullptr,
                                const bool* cancel = nullptr);

    /// Makes a folder the current one of the process, for all its threads. \return whether it is
    static bool SetCurrentWorkingDirUtf8(const std::string& path);

    /// Empty when the system cannot tell.
    [[nodiscard]] static std::string GetCurrentWorkingDirUtf8();

    /// The value of the environment variable TEMP when it is set, else the folder that the system names, else ".".
    /// '/'-separated; a separator at the end stays.
    [[nodiscard]] static std::string GetTempFolderUtf8();

    /// A name in `folder` that was free a moment ago: a proposal, nothing is left behind under it. Empty when no name
    /// can be made.
    [[nodiscard]] static std::string GetTempFileUtf8(const std::string& folder, const std::string& prefix);
    /// The same with `extension`, dot included, in place of every ".tmp" of the whole path.
    [[nodiscard]] static std::string GetTempFileUtf8(const std::string& folder, const std::string& prefix,
                                                     const std::string& extension);

    /// The folder of the running program without a separator at its end. False, with `folder` empty, when the system
    /// cannot tell.
    static bool GetFolderOfCurrentProcessUtf8(std::string& folder);

    /// Bytes free to this user on the volume of an absolute path. `root` becomes the root of the volume (Windows: drive
    /// or share, with a separator at its end; Linux: mount point). For other paths and on failure 0 and an empty root.
    [[nodiscard]] static unsigned long long GetAvailableDiskSizeUtf8(const std::string& path, std::string& root);

    /// Gives everybody every right on a file or folder. Dangerous: anybody may then change what is in it. Links are
    /// refused.
    static bool GrantAllFilePermissionsUtf8(const std::string& path);
    /// @}

    /// \name Well-known folders
    /// As the system spells them; "." when it does not know. On Linux they need not exist.
    /// @{
    [[nodiscard]] static std::string GetFontFolderUtf8();          ///< fonts that are installed for everybody
    [[nodiscard]] static std::string GetCommonAppDataFolderUtf8(); ///< data of applications for all users
    [[nodiscard]] static std::string GetLocalAppDataFolderUtf8();  ///< data of applications that stays on this machine
    [[nodiscard]] static std::string GetAppDataFolderUtf8();       ///< settings of applications
    [[nodiscard]] static std::string GetPicturesFolderUtf8();      ///< the user's pictures
    [[nodiscard]] static std::string GetDocumentsFolderUtf8();     ///< the user's documents
    [[nodiscard]] static std::string GetDownloadFolderUtf8();      ///< what the user's browser has fetched
    /// @}

    /// Walks through folders: derive from it and override what should be seen; what is not overridden lets the walk go
    /// on. Returning false from a callback ends the walk at once: nothing else is called, and the folders still open
    /// are not left.
    ///
    /// Entries come in the order in which the system lists them, which is none to rely on; a folder comes before its
    /// content. Hidden and system entries are visited like others, "." and ".." never. A link to a folder is reported
    /// as a folder and not entered, so that walks end on loops and stay below their root; the root itself may be a
    /// link. The depth is not limited. On Linux a name that holds a '\' is passed over, because no path could address
    /// it; other names come byte by byte as they are stored, ill-formed UTF-8 included.
    ///
    /// An object carries the state of its walk: one walk at a time, separate objects in parallel.
    class KY_API FileSystemVisitor
    {
    public:
        FileSystemVisitor();
        /// A visitor of its own; not to be used while `other` walks.
        /// @{
        FileSystemVisitor(const FileSystemVisitor& other);
        FileSystemVisitor& operator=(const FileSystemVisitor& other);
        /// @}
        virtual ~FileSystemVisitor();

        /// `folder` is the root as given to visit(), or a folder below it joined with '/'. Names are bare names. The
        /// arguments live as long as the call.
        /// @{
        virtual bool onEnterFolder(const std::string& folder);
        virtual bool onFile(const std::string& folder, const std::string& fileName);
        virtual bool onFolder(const std::string& folder, const std::string& folderName);
        virtual bool onLeaveFolder(const std::string& folder);
        /// @}

        /// Walks through `root`.
        ///
        /// \param root an empty text means the root folder of the current drive
        /// \param recursive whether folders below the root are entered
        /// \param filters extensions, with or without their dot, of the files to report; null or empty for all files.
        ///        Empty ones are ignored. A filter is compared with the end of the name. Folders are not filtered.
        /// \param caseInsensitive compare with A-Z folded
        /// \return false when a callback ended the walk; a folder that cannot be listed is passed over without a call
        bool visit(const std::string& root, bool recursive, const std::vector<std::string>* filters = nullptr,
                   bool caseInsensitive = false);

    protected:
        /// Walks one folder, and what is below it when the walk is recursive.
        bool visitImpl(const std::string& folder);

    private:
        bool isWanted(const std::string& fileName) const;
        void setFilters(const std::vector<std::string>* filters);
        void clearFilters();

        bool mRecursive = false;
        bool mCaseInsensitive = false;
        std::vector<std::string> mFilterList;               // each begins with a dot
        const std::vector<std::string>* mFilters = nullptr; // the list, or null when every file is taken
    };

    /// Collects names; see GlobFileAndFolderUtf8().
    class KY_API GlobFileAndFolderFunctor : public FileSystemVisitor
    {
    public:
        /// The vectors are not owned and must outlive the walk; a null one means that those names are not stored.
        GlobFileAndFolderFunctor(std::vector<std::string>* files, std::vector<std::string>* folders, bool fullPath);
        /// Collects into the same vectors.
        /// @{
        GlobFileAndFolderFunctor(const GlobFileAndFolderFunctor& other);
        GlobFileAndFolderFunctor& operator=(const GlobFileAndFolderFunctor& other);
        /// @}
        ~GlobFileAndFolderFunctor() override;

        bool onEnterFolder(const std::string& folder) override;
        bool onFile(const std::string& folder, const std::string& fileName) override;
        bool onFolder(const std::string& folder, const std::string& folderName) override;
        bool onLeaveFolder(const std::string& folder) override;

    private:
        std::vector<std::string>* mFiles;
        std::vector<std::string>* mFolders;
        bool mFullPath;
    };

    /// Bits for GlobFileAndFolderUtf8().
    enum GlobFlags
    {
        GlobAppend = 1,         ///< keep what the vectors hold; else they are emptied first
        GlobRecursive = 2,      ///< descend into sub-folders
        GlobBareNames = 4,      ///< names only; else joined with their folder
        GlobCaseInsensitive = 8 ///< compare extensions with A-Z folded
    };

    /// Collects the files and folders below `root`, which is itself not among them. A vector may be null. `filters` and
    /// order are those of FileSystemVisitor::visit(). A root that cannot be listed gives nothing.
    static void GlobFileAndFolderUtf8(const std::string& root, std::vector<std::string>* files,
                                      std::vector<std::string>* folders, const std::vector<std::string>* filters,
                                      int flags);
};

} // namespace ky
