// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Finding files again that documents refer to.

#include <ky/kyDirUtils.h>
#include <ky/kyExport.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ky
{

namespace impl
{
class XRefIndexBuilder;
} // namespace impl

/// The walk that fills the index of a kyXRefResolverSearchPath. Derive from it to leave files or whole folders out, or
/// to end the walk.
class KY_API XRefResolverFileSystemVisitor : public kyDirUtils::FileSystemVisitor
{
public:
    /// \param cancel may be null; otherwise it outlives the walk, and setting it, from any thread, ends the walk
    explicit XRefResolverFileSystemVisitor(const std::atomic<bool>* cancel = nullptr);
    /// A visitor of its own with the same flag.
    /// @{
    XRefResolverFileSystemVisitor(const XRefResolverFileSystemVisitor& other);
    XRefResolverFileSystemVisitor& operator=(const XRefResolverFileSystemVisitor& other);
    /// @}
    ~XRefResolverFileSystemVisitor() override;

    /// Asked before every file and folder: true ends the walk. By default the flag given at construction.
    virtual bool shouldCancel();

    /// Whether the file goes into the index. By default every file does.
    virtual bool acceptFile(const std::string& folder, const std::string& fileName);

    /// Whether the files directly in the folder go into the index. Folders below are asked about themselves. By default
    /// every folder does.
    virtual bool acceptFolder(const std::string& folder);

    bool onEnterFolder(const std::string& folder) override;
    bool onFile(const std::string& folder, const std::string& fileName) override;
    bool onFolder(const std::string& folder, const std::string& folderName) override;
    bool onLeaveFolder(const std::string& folder) override;

private:
    friend class kyXRefResolverSearchPath;

    const std::atomic<bool>* mCancel;
    impl::XRefIndexBuilder* mBuilder = nullptr; // while refresh() runs
};

/// Resolves the file references that documents store (textures, attached drawings, linked tables) after the documents
/// or the files have moved. The files below a number of root folders are indexed once; each reference is then looked up
/// in the index, without touching the file system.
///
/// \code
/// ky::kyXRefResolverSearchPath searchPath;
/// searchPath.addRoot("/srv/projects/bridge");
/// searchPath.addRoot("/srv/library");
/// searchPath.refresh();
/// searchPath.resolve("D:\\Work\\Bridge\\textures\\oak.png"); // "/srv/projects/bridge/textures/oak.png"
/// \endcode
///
/// A reference is a UTF-8 path as some program on some machine wrote it: absolute with a drive letter, on a share, from
/// '/' on, or relative; '/' and '\' separate alike. Empty components and "." are passed over, ".." takes back the
/// component before it, or nothing at its start. A reference that ends in a separator, "." or ".." resolves to nothing.
///
/// Candidates are the indexed files with the file name of the reference. The best one is, each rule deciding where
/// those before it leave a tie:
/// 1. a file whose path is exactly the reference: absolute references as they stand; relative ones taken from the
///    document's folder first, then from each root;
/// 2. the longest common tail: whole components compared from the right, the file name being the first, those of the
///    root's own absolute path (with its drive or share) included;
/// 3. the longest common tail with the spelling the same in upper and lower case;
/// 4. the root added first;
/// 5. the fewest folders between root and file;
/// 6. byte order of the names of the folders from the root down, then of the file.
///
/// So a result depends on what is indexed only, never on the order in which the system lists files.
///
/// Case rule: by default A-Z are folded, as references often come from systems that do not tell upper from lower case;
/// with CaseSensitive bytes are compared. The rule holds for folders and file names and can be changed at any time.
/// Names that differ in Unicode normalization are different.
///
/// The walk is that of kyDirUtils::FileSystemVisitor: links to folders are not entered, so nothing outside a root is
/// indexed, while links to files count as files. A file takes about 24 bytes and its name, a folder 8 bytes and its
/// name; one name is stored once. Looking up takes time in proportion to the number of files of that name and their
/// depth.
///
/// Thread safety: refresh() builds a new index beside the one in use. Const functions may be called from several
/// threads at once, also while another thread is in refresh(); they see the old index or the new one whole. Everything
/// else, refresh() included, is for one thread at a time, and addRoot(), clearRoots() and setFilters() for no other
/// thread meanwhile.
class KY_API kyXRefResolverSearchPath
{
public:
    /// How names are compared.
    enum class CaseRule : std::uint8_t
    {
        CaseSensitive,  ///< by bytes
        CaseInsensitive ///< with A-Z folded
    };

    /// One indexed file that a reference may mean.
    struct Match
    {
        std::string path;                 ///< the root as it was added, and the rest with '/'
        std::size_t root = 0;             ///< position of the root in getRoots() at the last refresh()
        std::size_t commonComponents = 0; ///< length of the common tail, at least 1
        bool isExact = false;             ///< by rule 1
    };

    /// Without roots.
    explicit kyXRefResolverSearchPath(CaseRule rule = CaseRule::CaseInsensitive);
    kyXRefResolverSearchPath(const kyXRefResolverSearchPath&) = delete;
    kyXRefResolverSearchPath& operator=(const kyXRefResolverSearchPath&) = delete;
    ~kyXRefResolverSearchPath();

    /// Takes effect at once.
    void setCaseRule(CaseRule rule);
    /// The rule in force.
    [[nodiscard]] CaseRule getCaseRule() const;

    /// \name Roots
    /// Changes take effect with the next refresh().
    /// @{

    /// Appends a root, of lower priority than those before it. A relative one is taken from the current folder at the
    /// time of refresh(). False for an empty text and for a root that was added already, in this spelling.
    bool addRoot(const std::string& folder);
    /// Removes all roots.
    void clearRoots();
    /// The roots as they were added.
    [[nodiscard]] const std::vector<std::string>& getRoots() const { return mRoots; }

    /// Index only files with these extensions, as in FileSystemVisitor::visit(), A-Z folded; none means all files.
    void setFilters(const std::vector<std::string>& extensions) { mFilters = extensions; }
    /// @}

    /// \name Index
    /// @{

    /// Indexes all roots anew. A root that cannot be listed adds nothing; isRootIndexed() tells.
    /// \param cancel may be null; otherwise setting it, from any thread, ends the walk
    /// \return false when the walk was ended, or when the names take more than 4 GiB: the index stays as it was
    bool refresh(const std::atomic<bool>* cancel = nullptr);
    /// The same with a visitor that chooses files and folders.
    bool refresh(XRefResolverFileSystemVisitor& visitor);

    /// Whether the root at this position could be listed by the last successful refresh().
    [[nodiscard]] bool isRootIndexed(std::size_t root) const;

    [[nodiscard]] std::size_t getFileCount() const;   ///< files in the index
    [[nodiscard]] std::size_t getFolderCount() const; ///< the roots included
    [[nodiscard]] std::size_t getMemoryUsage() const; ///< bytes that the index takes
    /// @}

    /// \name Resolving
    /// `documentFolder`, unless empty, is the folder of the document that holds the reference, for rule 1; a relative
    /// one is taken from the current folder.
    /// @{

    /// Path of the best match; empty when no indexed file has the name.
    [[nodiscard]] std::string resolve(const std::string& reference, const std::string& documentFolder = {}) const;

    /// The best match. False, with `match` untouched, when there is none.
    bool resolve(const std::string& reference, Match& match, const std::string& documentFolder = {}) const;

    /// All indexed files with the name of the reference, best first.
    [[nodiscard]] std::vector<Match> findCandidates(const std::string& reference,
                                                    const std::string& documentFolder = {}) const;
    /// @}

private:
    struct Data;

    std::vector<std::string> mRoots;
    std::vector<std::string> mFilters;
    std::unique_ptr<Data> mData;
};

} // namespace ky
