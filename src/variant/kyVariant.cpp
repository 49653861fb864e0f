// SPDX-License-Identifier: MIT
#include <ky/kyVariant.h>

#include "platform/compiler.h"
#include "variant/block_pool.h"
#include "variant/variant_access.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ky
{
namespace
{

using impl::List;
using impl::Map;
using impl::MapTree;
using impl::StringList;
using Type = kyVariant::Type;

Type typeOfCount(std::size_t count) noexcept
{
    switch (count)
    {
    case 2: return Type::Vec2d;
    case 3: return Type::Vec3d;
    case 4: return Type::Vec4d;
    case 9: return Type::Mat3d;
    case 16: return Type::Mat4d;
    default: return Type::Unknown;
    }
}

/// A list or map on its way out, detached from the variant that owned it.
struct Container
{
    void* object;
    Type type;

    [[nodiscard]] List& list() const noexcept { return *static_cast<List*>(object); }
    [[nodiscard]] Map& map() const noexcept { return *static_cast<Map*>(object); }
};

/// Drops elements until one is a container itself; null when none is left.
kyVariant* nextNested(std::vector<kyVariant>& items) noexcept
{
    while (!items.empty())
    {
        if (impl::VariantAccess::isContainer(items.back()))
            return &items.back();
        items.pop_back();
    }
    return nullptr;
}

kyVariant* nextNested(Map& map, MapTree::Node* node) noexcept
{
    while (node != nullptr)
    {
        if (impl::VariantAccess::isContainer(node->entry.second))
            return &node->entry.second;
        node = MapTree::nextDoomed(map);
    }
    return nullptr;
}

kyVariant* nextNested(const Container& from, bool first) noexcept
{
    if (from.type == Type::List)
        return nextNested(impl::VariantAccess::items(from.list()));
    return nextNested(from.map(), first ? MapTree::firstDoomed(from.map()) : MapTree::doomed(from.map()));
}

/// The slot that nextNested() gave last.
kyVariant& currentSlot(const Container& in) noexcept
{
    return in.type == Type::List ? impl::VariantAccess::items(in.list()).back()
                                 : MapTree::doomed(in.map())->entry.second;
}

void freeEmpty(const Container& container) noexcept
{
    if (container.type == Type::List)
        impl::destroyInBlock(&container.list());
    else
        impl::destroyInBlock(&container.map());
}

/// Frees a container with everything below it, at any depth and without further memory: on the way down the slot that
/// held a nested container remembers the container above.
void tearDown(Container current) noexcept
{
    using Access = impl::VariantAccess;
    Container above{nullptr, Type::Unknown};
    bool first = true;
    for (;;)
    {
        if (kyVariant* const slot = nextNested(current, first))
        {
            const Container nested{Access::object(*slot), slot->getType()};
            Access::set(*slot, above.type, above.object);
            above = current;
            current = nested;
            first = true;
            continue;
        }
        freeEmpty(current);
        if (above.object == nullptr)
            return;
        current = above;
        first = false;
        kyVariant& slot = currentSlot(current);
        above = Container{Access::object(slot), slot.getType()};
        Access::set(slot, Type::Unknown, nullptr);
    }
}

/// Apart from the strings, which are destroyed most often: what this needs on the stack is not theirs.
KY_NOINLINE void destroyObject(Type type, void* object) noexcept
{
    switch (type)
    {
    case Type::StringList: impl::destroyInBlock(static_cast<StringList*>(object)); break;
    case Type::List:
    case Type::Map: tearDown(Container{object, type}); break;
    default: impl::freeBlock(object, impl::numberCount(type) * sizeof(double)); break;
    }
}

} // namespace

const kyVariant kyVariant::sNullVariant;

kyVariant::UserDataInterface::~UserDataInterface() = default;

kyVariant::kyVariant(std::string_view text) : kyVariant()
{
    payload_.object = impl::createInBlock<std::string>(text);
    type_ = Type::String;
}

kyVariant::kyVariant(const std::string& text) : kyVariant(std::string_view(text)) {}

kyVariant::kyVariant(std::string&& text) : kyVariant()
{
    payload_.object = impl::createInBlock<std::string>(std::move(text));
    type_ = Type::String;
}

kyVariant::kyVariant(const std::vector<std::string>& texts) : kyVariant()
{
    payload_.object = impl::createInBlock<StringList>(texts);
    type_ = Type::StringList;
}

kyVariant::kyVariant(std::vector<std::string>&& texts) : kyVariant()
{
    payload_.object = impl::createInBlock<StringList>(std::move(texts));
    type_ = Type::StringList;
}

kyVariant::kyVariant(const kyVariantListImpl& list) : kyVariant()
{
    payload_.object = impl::createInBlock<List>(list);
    type_ = Type::List;
}

kyVariant::kyVariant(kyVariantListImpl&& list) : kyVariant()
{
    payload_.object = impl::createInBlock<List>(std::move(list));
    type_ = Type::List;
}

kyVariant::kyVariant(const kyVariantMapImpl& map) : kyVariant()
{
    payload_.object = impl::createInBlock<Map>(map);
    type_ = Type::Map;
}

kyVariant::kyVariant(kyVariantMapImpl&& map) : kyVariant()
{
    payload_.object = impl::createInBlock<Map>(std::move(map));
    type_ = Type::Map;
}

kyVariant::kyVariant(const double* values, std::size_t count) : kyVariant()
{
    if (typeOfCount(count) != Type::Unknown)
        createNumbers(typeOfCount(count), values);
}

kyVariant::kyVariant(const float* values, std::size_t count) : kyVariant()
{
    if (typeOfCount(count) == Type::Unknown)
        return;
    std::array<double, 16> wide{};
    std::copy_n(values, count, wide.begin());
    createNumbers(typeOfCount(count), wide.data());
}

void kyVariant::createNumbers(Type type, const double* values)
{
    const std::size_t count = impl::numberCount(type);
    auto* const numbers = static_cast<double*>(impl::allocateBlock(count * sizeof(double)));
    std::copy_n(values, count, numbers);
    payload_.object = numbers;
    type_ = type;
}

void kyVariant::createZero(Type type)
{
    constexpr std::array<double, 16> zeros{};
    Payload zero;
    switch (type)
    {
    case Type::Real: zero = Payload(0.0); break;
    case Type::Bool: zero = Payload(false); break;
    case Type::Integer:
    case Type::DateTime: break;
    case Type::UserData: zero = Payload(static_cast<UserDataInterface*>(nullptr)); break;
    case Type::String: zero.object = impl::createInBlock<std::string>(); break;
    case Type::StringList: zero.object = impl::createInBlock<StringList>(); break;
    case Type::List: zero.object = impl::createInBlock<List>(); break;
    case Type::Map: zero.object = impl::createInBlock<Map>(); break;
    case Type::Vec2d:
    case Type::Vec3d:
    case Type::Vec4d:
    case Type::Mat3d:
    case Type::Mat4d: return createNumbers(type, zeros.data());
    default: return;
    }
    payload_ = zero;
    type_ = type;
}

kyVariant& kyVariant::setType(Type type)
{
    kyVariant zero(type);
    if (zero.isNull())
    {
        if (ownsPayload())
            destroyPayload();
        payload_ = Payload();
        return *this;
    }
    return *this = std::move(zero);
}

kyVariant& kyVariant::assignCopy(const kyVariant& other)
{
    if (this != &other)
    {
        kyVariant copy(other);
        *this = std::move(copy);
    }
    return *this;
}

void kyVariant::destroyPayload() noexcept
{
    void* const object = payload_.object;
    if (KY_LIKELY(type_ == Type::String && object != nullptr))
    {
        payload_ = Payload();
        impl::destroyInBlock(static_cast<std::string*>(object));
        return;
    }
    UserDataInterface* const user = type_ == Type::UserData ? payload_.user : nullptr;
    payload_ = Payload();
    if (type_ == Type::UserData)
        delete user;
    else if (object != nullptr)
        destroyObject(type_, object);
}

std::string kyVariant::getTypeAsString() const
{
    static constexpr std::array<const char*, 14> names = {"UNKNOWN", "INTEGER", "REAL",  "STRING",      "BOOL",
                                                          "VEC2D",   "VEC3D",   "VEC4D", "NOT DEFINED", "STRINGLIST",
                                                          "MAP",     "LIST",    "MAT3D", "MAT4D"};
    const auto number = static_cast<std::size_t>(type_);
    return number < names.size() ? names[number] : "NOT DEFINED";
}

} // namespace ky
