// SPDX-License-Identifier: MIT
#include "filesystem/path_text.h"
#include "filesystem/xref_index.h"

#include <ky/kyXRefResolverSearchPath.h>

#include <algorithm>
#include <mutex>
#include <optional>
#include <tuple>
#include <utility>

namespace ky
{

namespace impl
{

/// Follows a walk and takes its files into the index.
class XRefIndexBuilder
{
public:
    explicit XRefIndexBuilder(XRefIndex& index) : mIndex(index) {}

    void enter(const std::string& folder, bool takesFiles)
    {
        if (mOpen.empty())
            mOpen.push_back({mIndex.addRootFolder(), takesFiles});
        else
        {
            const std::string_view name = std::string_view(folder).substr(findLastSeparator(folder) + 1);
            mOpen.push_back({mIndex.addFolder(mOpen.back().number, name), takesFiles});
        }
    }

    bool takesFiles() const { return !mOpen.empty() && mOpen.back().takesFiles; }
    void addFile(const std::string& name) { mIndex.addFile(mOpen.back().number, name); }

    void leave()
    {
        if (!mOpen.empty())
            mOpen.pop_back();
    }

    bool isFull() const { return mIndex.isFull(); }

private:
    struct OpenFolder
    {
        std::uint32_t number;
        bool takesFiles;
    };

    XRefIndex& mIndex;
    std::vector<OpenFolder> mOpen; // from the root to the current one
};

} // namespace impl

namespace
{

using impl::FileReference;
using impl::XRefIndex;
using Match = kyXRefResolverSearchPath::Match;

/// One reference to be looked up.
class Query
{
public:
    Query(const XRefIndex& index, const std::string& reference, const std::string& absoluteDocumentFolder,
          bool foldCase)
        : mIndex(index),
          mReference(reference),
          mFoldCase(foldCase)
    {
        if (absoluteDocumentFolder.empty() || mReference.isAbsolute())
            return;
        mFromDocument.emplace(absoluteDocumentFolder);
        mFromDocument->append(reference);
    }

    /// Calls for every file that the reference may mean.
    template <class Call>
    void forEach(const Call& call) const
    {
        if (!mReference.hasFileName())
            return;
        for (std::uint32_t file = mIndex.firstFile(mReference.components().back()); file != XRefIndex::none;
             file = mIndex.nextFile(file))
        {
            const Candidate candidate = candidateOf(file);
            if (candidate.tail.common > 0)
                call(candidate);
        }
    }

    struct Candidate
    {
        std::uint32_t file = XRefIndex::none;
        int exactness = 0;
        XRefIndex::Tail tail;
    };

    bool isBetter(const Candidate& a, const Candidate& b) const
    {
        const auto rank = [](const Candidate& c)
        {
            return std::tuple(-c.exactness, XRefIndex::none - c.tail.common, XRefIndex::none - c.tail.sameCase,
                              c.tail.root, c.tail.depth);
        };
        const auto rankOfA = rank(a);
        const auto rankOfB = rank(b);
        return rankOfA != rankOfB ? rankOfA < rankOfB : mIndex.isBefore(a.file, b.file);
    }

    Match matchOf(const Candidate& candidate) const
    {
        Match match;
        match.path = mIndex.roots()[candidate.tail.root].path;
        std::string below;
        mIndex.appendRelativePath(below, candidate.file);
        impl::appendPath(match.path, below);
        match.root = candidate.tail.root;
        match.commonComponents = candidate.tail.common;
        match.isExact = candidate.exactness > 0;
        return match;
    }

private:
    enum Exactness
    {
        NotExact,
        FromRoot,
        WholePath
    };

    Candidate candidateOf(std::uint32_t file) const
    {
        Candidate candidate{file, NotExact, mIndex.compare(file, mReference, mFoldCase)};
        const XRefIndex::Tail& tail = candidate.tail;
        const std::size_t size = mReference.components().size();
        if (mReference.isAbsolute())
            candidate.exactness = tail.common == tail.all && tail.all == size ? WholePath : NotExact;
        else if (mFromDocument && isWhole(file, *mFromDocument))
            candidate.exactness = WholePath;
        else if (!mReference.leadsOut() && tail.common == size && tail.depth + 1 == size)
            candidate.exactness = FromRoot;
        return candidate;
    }

    bool isWhole(std::uint32_t file, const FileReference& path) const
    {
        const XRefIndex::Tail tail = mIndex.compare(file, path, mFoldCase);
        return tail.common == tail.all && tail.all == path.components().size();
    }

    const XRefIndex& mIndex;
    FileReference mReference;
    std::optional<FileReference> mFromDocument;
    bool mFoldCase;
};

std::string absolutePath(const std::string& folder)
{
    return folder.empty() ? std::string() : kyDirUtils::GetAbsolutePathUtf8(folder);
}

} // namespace

XRefResolverFileSystemVisitor::XRefResolverFileSystemVisitor(const std::atomic<bool>* cancel) : mCancel(cancel) {}

XRefResolverFileSystemVisitor::XRefResolverFileSystemVisitor(const XRefResolverFileSystemVisitor& other)
    : FileSystemVisitor(other),
      mCancel(other.mCancel)
{
}

XRefResolverFileSystemVisitor& XRefResolverFileSystemVisitor::operator=(const XRefResolverFileSystemVisitor& other)
{
    if (this != &other)
    {
        FileSystemVisitor::operator=(other);
        mCancel = other.mCancel; // the builder belongs to the walk that is under way
    }
    return *this;
}

XRefResolverFileSystemVisitor::~XRefResolverFileSystemVisitor() = default;

bool XRefResolverFileSystemVisitor::shouldCancel()
{
    return mCancel != nullptr && mCancel->load(std::memory_order_relaxed);
}

bool XRefResolverFileSystemVisitor::acceptFile(const std::string&, const std::string&) { return true; }

bool XRefResolverFileSystemVisitor::acceptFolder(const std::string&) { return true; }

bool XRefResolverFileSystemVisitor::onEnterFolder(const std::string& folder)
{
    if (shouldCancel())
        return false;
    if (mBuilder != nullptr)
        mBuilder->enter(folder, acceptFolder(folder));
    return true;
}

bool XRefResolverFileSystemVisitor::onFile(const std::string& folder, const std::string& fileName)
{
    if (shouldCancel())
        return false;
    if (mBuilder == nullptr)
        return true;
    if (mBuilder->takesFiles() && acceptFile(folder, fileName))
        mBuilder->addFile(fileName);
    return !mBuilder->isFull();
}

bool XRefResolverFileSystemVisitor::onFolder(const std::string&, const std::string&) { return !shouldCancel(); }

bool XRefResolverFileSystemVisitor::onLeaveFolder(const std::string&)
{
    if (mBuilder != nullptr)
        mBuilder->leave();
    return true;
}

struct kyXRefResolverSearchPath::Data
{
    std::shared_ptr<const XRefIndex> current() const
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return index;
    }

    void replace(std::shared_ptr<const XRefIndex> fresh)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        index.swap(fresh);
    }

    std::atomic<CaseRule> rule;

private:
    mutable std::mutex mutex;
    std::shared_ptr<const XRefIndex> index = std::make_shared<XRefIndex>();
};

kyXRefResolverSearchPath::kyXRefResolverSearchPath(CaseRule rule) : mData(std::make_unique<Data>())
{
    mData->rule = rule;
}

kyXRefResolverSearchPath::~kyXRefResolverSearchPath() = default;

void kyXRefResolverSearchPath::setCaseRule(CaseRule rule) { mData->rule = rule; }

kyXRefResolverSearchPath::CaseRule kyXRefResolverSearchPath::getCaseRule() const { return mData->rule; }

bool kyXRefResolverSearchPath::addRoot(const std::string& folder)
{
    if (folder.empty() || std::find(mRoots.begin(), mRoots.end(), folder) != mRoots.end())
        return false;
    mRoots.push_back(folder);
    return true;
}

void kyXRefResolverSearchPath::clearRoots() { mRoots.clear(); }

bool kyXRefResolverSearchPath::refresh(const std::atomic<bool>* cancel)
{
    XRefResolverFileSystemVisitor visitor(cancel);
    return refresh(visitor);
}

bool kyXRefResolverSearchPath::refresh(XRefResolverFileSystemVisitor& visitor)
{
    /// Also when a callback throws.
    struct Connection
    {
        ~Connection() { visitor.mBuilder = nullptr; }
        XRefResolverFileSystemVisitor& visitor;
    };
    const auto index = std::make_shared<XRefIndex>();
    const Connection connection{visitor};
    for (const std::string& root : mRoots)
    {
        index->addRoot(root);
        impl::XRefIndexBuilder builder(*index);
        visitor.mBuilder = &builder;
        if (!visitor.visit(root, true, &mFilters, true) || index->isFull())
            return false;
    }
    index->finish();
    mData->replace(index);
    return true;
}

bool kyXRefResolverSearchPath::isRootIndexed(std::size_t root) const
{
    const auto index = mData->current();
    return root < index->roots().size() && index->roots()[root].isListed;
}

std::size_t kyXRefResolverSearchPath::getFileCount() const { return mData->current()->fileCount(); }

std::size_t kyXRefResolverSearchPath::getFolderCount() const { return mData->current()->folderCount(); }

std::size_t kyXRefResolverSearchPath::getMemoryUsage() const { return mData->current()->memoryUsage(); }

std::string kyXRefResolverSearchPath::resolve(const std::string& reference, const std::string& documentFolder) const
{
    Match match;
    resolve(reference, match, documentFolder);
    return std::move(match.path);
}

bool kyXRefResolverSearchPath::resolve(const std::string& reference, Match& match,
                                       const std::string& documentFolder) const
{
    const auto index = mData->current();
    const std::string document = absolutePath(documentFolder);
    const Query query(*index, reference, document, mData->rule == CaseRule::CaseInsensitive);
    Query::Candidate best;
    query.forEach(
        [&](const Query::Candidate& candidate)
        {
            if (best.file == XRefIndex::none || query.isBetter(candidate, best))
                best = candidate;
        });
    if (best.file == XRefIndex::none)
        return false;
    match = query.matchOf(best);
    return true;
}

std::vector<Match> kyXRefResolverSearchPath::findCandidates(const std::string& reference,
                                                            const std::string& documentFolder) const
{
    const auto index = mData->current();
    const std::string document = absolutePath(documentFolder);
    const Query query(*index, reference, document, mData->rule == CaseRule::CaseInsensitive);
    std::vector<Query::Candidate> candidates;
    query.forEach([&](const Query::Candidate& candidate) { candidates.push_back(candidate); });
    std::sort(candidates.begin(), candidates.end(), [&](const auto& a, const auto& b) { return query.isBetter(a, b); });
    std::vector<Match> matches;
    matches.reserve(candidates.size());
    for (const Query::Candidate& candidate : candidates)
        matches.push_back(query.matchOf(candidate));
    return matches;
}

} // namespace ky
