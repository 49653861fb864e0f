// SPDX-License-Identifier: MIT
// Equality and order. Nested containers wait in a list (equality) or stand on an explicit stack (order, where the first
// difference decides), so that depth costs no stack.
#include "variant/variant_access.h"

#include <array>
#include <cstring>
#include <functional>

namespace ky
{
namespace impl
{

const std::string& VariantAccess::string(const kyVariant& v) noexcept
{
    static const std::string none;
    return v.payload_.object != nullptr ? v.getString() : none;
}

const StringList& VariantAccess::stringList(const kyVariant& v) noexcept
{
    static const StringList none;
    return v.payload_.object != nullptr ? v.getStringList() : none;
}

const double* VariantAccess::numbers(const kyVariant& v) noexcept
{
    static constexpr std::array<double, 16> zeros{};
    return v.payload_.object != nullptr ? v.getVec2d() : zeros.data();
}

namespace
{

using Access = VariantAccess;

template <class T>
int threeWay(const T& a, const T& b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}

int compareNumbers(const kyVariant& a, const kyVariant& b) noexcept
{
    return std::memcmp(Access::numbers(a), Access::numbers(b), numberCount(a.getType()) * sizeof(double));
}

bool isNested(const kyVariant& v) noexcept { return v.getType() == Type::List || v.getType() == Type::Map; }

/// Two values of one type that is not a container.
bool equalLeaf(const kyVariant& a, const kyVariant& b)
{
    switch (a.getType())
    {
    case Type::Unknown: return true;
    case Type::Integer:
    case Type::DateTime: return Access::integer(a) == Access::integer(b);
    case Type::Real: return Access::real(a) == Access::real(b);
    case Type::String: return Access::string(a) == Access::string(b);
    case Type::Bool: return Access::boolean(a) == Access::boolean(b);
    case Type::StringList: return Access::stringList(a) == Access::stringList(b);
    case Type::UserData:
        if (Access::user(a) != nullptr && Access::user(b) != nullptr)
            return Access::user(a)->isEqual(*Access::user(b));
        return Access::user(a) == Access::user(b);
    default: return numberCount(a.getType()) != 0 && compareNumbers(a, b) == 0;
    }
}

/// Two values of one type that is not a container. NaN is equivalent to every number.
int compareLeaf(const kyVariant& a, const kyVariant& b)
{
    switch (a.getType())
    {
    case Type::Unknown: return 0;
    case Type::Integer:
    case Type::DateTime: return threeWay(Access::integer(a), Access::integer(b));
    case Type::Real: return threeWay(Access::real(a), Access::real(b));
    case Type::String: return Access::string(a).compare(Access::string(b));
    case Type::Bool: return static_cast<int>(Access::boolean(a)) - static_cast<int>(Access::boolean(b));
    case Type::StringList: return threeWay(Access::stringList(a), Access::stringList(b));
    case Type::UserData:
    {
        const std::less<> before;
        return before(Access::user(a), Access::user(b)) ? -1 : (before(Access::user(b), Access::user(a)) ? 1 : 0);
    }
    default: return numberCount(a.getType()) != 0 ? compareNumbers(a, b) : 0;
    }
}

/// A list or map, or neither where setType() left a type without an object.
struct ContainerView
{
    explicit ContainerView(const kyVariant& v) noexcept : list(Access::list(v)), map(Access::map(v)) {}
    explicit ContainerView(const List& l) noexcept : list(&l), map(nullptr) {}
    explicit ContainerView(const Map& m) noexcept : list(nullptr), map(&m) {}

    [[nodiscard]] std::size_t size() const noexcept
    {
        return list != nullptr ? list->size() : (map != nullptr ? map->size() : 0);
    }

    const List* list;
    const Map* map;
};

/// Steps through the elements of a container; keys are null in lists.
class Cursor
{
public:
    explicit Cursor(const ContainerView& view) noexcept
    {
        if (view.list != nullptr)
        {
            item_ = Access::items(*view.list).data();
            end_ = item_ + view.list->size();
        }
        else if (view.map != nullptr)
        {
            links_ = MapTree::head(*view.map).left;
        }
    }
    [[nodiscard]] bool atEnd() const noexcept { return links_ == nullptr ? item_ == end_ : MapTree::isHead(links_); }
    [[nodiscard]] const MapTree::Node* node() const noexcept
    {
        return links_ != nullptr ? MapTree::nodeOf(links_) : nullptr;
    }
    [[nodiscard]] const kyVariant& value() const noexcept { return links_ != nullptr ? node()->entry.second : *item_; }
    void advance() noexcept
    {
        if (links_ != nullptr)
            links_ = links_->next;
        else
            ++item_;
    }

private:
    const kyVariant* item_ = nullptr;
    const kyVariant* end_ = nullptr;
    MapTree::Links* links_ = nullptr;
};

struct Pair
{
    ContainerView a;
    ContainerView b;
};

bool sameKeys(const MapTree::Node& a, const MapTree::Node& b) noexcept
{
    const std::string& key = a.entry.first;
    const std::string& other = b.entry.first;
    // The prefix holds all of a short key.
    return a.prefix == b.prefix && key.size() == other.size() &&
           (key.size() <= 8 || std::memcmp(key.data() + 8, other.data() + 8, key.size() - 8) == 0);
}

/// Nested containers of equal type are only noted.
bool equalValues(const kyVariant& a, const kyVariant& b, std::vector<Pair>& pending)
{
    if (a.getType() != b.getType())
        return false;
    if (!isNested(a))
        return equalLeaf(a, b);
    pending.push_back({ContainerView(a), ContainerView(b)});
    return true;
}

bool equalElements(const List& a, const List& b, std::vector<Pair>& pending)
{
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        if (!equalValues(a[i], b[i], pending))
            return false;
    }
    return true;
}

bool equalEntries(const Map& a, const Map& b, std::vector<Pair>& pending)
{
    MapTree::Links* other = MapTree::head(b).left;
    for (MapTree::Links* links = MapTree::head(a).left; !MapTree::isHead(links); links = links->next)
    {
        const MapTree::Node& left = *MapTree::nodeOf(links);
        const MapTree::Node& right = *MapTree::nodeOf(other);
        if (!sameKeys(left, right) || !equalValues(left.entry.second, right.entry.second, pending))
            return false;
        other = other->next;
    }
    return true;
}

bool equalContainers(const Pair& whole)
{
    std::vector<Pair> pending;
    Pair pair = whole;
    for (;;)
    {
        if (pair.a.size() != pair.b.size())
            return false;
        if (pair.a.list != nullptr && pair.b.list != nullptr && !equalElements(*pair.a.list, *pair.b.list, pending))
            return false;
        if (pair.a.map != nullptr && pair.b.map != nullptr && !equalEntries(*pair.a.map, *pair.b.map, pending))
            return false;
        if (pending.empty())
            return true;
        pair = pending.back();
        pending.pop_back();
    }
}

/// Where the walk goes on in two containers whose elements were equivalent up to here.
struct Level
{
    Cursor a;
    Cursor b;
};

int compareKeys(const Cursor& a, const Cursor& b) noexcept
{
    return a.node() == nullptr ? 0 : MapTree::compare(a.node()->entry.first, a.node()->prefix, *b.node());
}

int compareContainers(const Pair& whole)
{
    std::vector<Level> above;
    Level level{Cursor(whole.a), Cursor(whole.b)};
    for (;;)
    {
        if (level.a.atEnd() || level.b.atEnd())
        {
            const int order = static_cast<int>(level.b.atEnd()) - static_cast<int>(level.a.atEnd());
            if (order != 0 || above.empty())
                return order;
            level = above.back();
            above.pop_back();
            continue;
        }
        if (const int order = compareKeys(level.a, level.b); order != 0)
            return order;
        const kyVariant& a = level.a.value();
        const kyVariant& b = level.b.value();
        if (a.getType() != b.getType())
            return a.getType() < b.getType() ? -1 : 1;
        level.a.advance();
        level.b.advance();
        if (isNested(a))
        {
            above.push_back(level);
            level = Level{Cursor(ContainerView(a)), Cursor(ContainerView(b))};
        }
        else if (const int order = compareLeaf(a, b); order != 0)
        {
            return order;
        }
    }
}

} // namespace

bool equalLists(const List& a, const List& b) { return equalContainers({ContainerView(a), ContainerView(b)}); }
bool equalMaps(const Map& a, const Map& b) { return equalContainers({ContainerView(a), ContainerView(b)}); }
bool lessList(const List& a, const List& b) { return compareContainers({ContainerView(a), ContainerView(b)}) < 0; }
bool lessMap(const Map& a, const Map& b) { return compareContainers({ContainerView(a), ContainerView(b)}) < 0; }

} // namespace impl

bool kyVariant::equalValue(const kyVariant& other) const
{
    if (impl::isNested(*this))
        return impl::equalContainers({impl::ContainerView(*this), impl::ContainerView(other)});
    return impl::equalLeaf(*this, other);
}

bool kyVariant::lessValue(const kyVariant& other) const
{
    if (impl::isNested(*this))
        return impl::compareContainers({impl::ContainerView(*this), impl::ContainerView(other)}) < 0;
    return impl::compareLeaf(*this, other) < 0;
}

} // namespace ky
