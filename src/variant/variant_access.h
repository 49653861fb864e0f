// SPDX-License-Identifier: MIT
// What the files of this room know about the inside of a variant.
#pragma once

#include "variant/block_pool.h"
#include "variant/map_tree.h"
#include <ky/kyVariant.h>

#include <string>
#include <vector>

namespace ky::impl
{

using Type = kyVariant::Type;
using List = kyVariant::kyVariantListImpl;
using Map = kyVariant::kyVariantMapImpl;
using StringList = std::vector<std::string>;

/// setType() with a number that names no type leaves a type without an object behind; everything here takes such a
/// variant for an empty one.
struct VariantAccess
{
    static std::int64_t integer(const kyVariant& v) noexcept { return v.payload_.integer; }
    static double real(const kyVariant& v) noexcept { return v.payload_.real; }
    static bool boolean(const kyVariant& v) noexcept { return v.payload_.boolean; }
    static const kyVariant::UserDataInterface* user(const kyVariant& v) noexcept { return v.payload_.user; }
    static void* object(const kyVariant& v) noexcept { return v.payload_.object; }
    static const std::string& string(const kyVariant& v) noexcept;
    static const StringList& stringList(const kyVariant& v) noexcept;
    static const double* numbers(const kyVariant& v) noexcept;

    static bool isContainer(const kyVariant& v) noexcept
    {
        return (v.type_ == Type::List || v.type_ == Type::Map) && v.payload_.object != nullptr;
    }
    /// The list or map inside, or null.
    static List* list(const kyVariant& v) noexcept
    {
        return v.type_ == Type::List ? static_cast<List*>(v.payload_.object) : nullptr;
    }
    static Map* map(const kyVariant& v) noexcept
    {
        return v.type_ == Type::Map ? static_cast<Map*>(v.payload_.object) : nullptr;
    }
    static std::vector<kyVariant>& items(List& list) noexcept { return list.items_; }
    static const std::vector<kyVariant>& items(const List& list) noexcept { return list.items_; }
    static Map::iterator iterator(const MapTree::Links* links) noexcept { return Map::iterator(links); }

    /// Overwrites the two words; the payload must be owned by nobody, and what was there is forgotten.
    static void set(kyVariant& v, Type type, void* object) noexcept
    {
        v.payload_ = kyVariant::Payload();
        v.payload_.object = object;
        v.type_ = type;
    }
    /// Gives the variant the object that its type needs if it has none.
    static void complete(kyVariant& v)
    {
        if (v.ownsPayload() && v.payload_.object == nullptr && v.type_ != Type::UserData)
            v.createZero(v.type_);
    }
    static void destroy(kyVariant& v) noexcept { v.destroyPayload(); }

    /// Copies into `to`, which is null; nested containers are only created empty and noted in `pending`.
    struct Pending
    {
        kyVariant* to;
        const kyVariant* from;
    };
    static void copyShallow(kyVariant& to, const kyVariant& from, std::vector<Pending>& pending)
    {
        if (from.ownsPayload())
        {
            copyOwned(to, from, pending);
            return;
        }
        to.payload_ = from.payload_;
        to.type_ = from.type_;
    }
    static void copyOwned(kyVariant& to, const kyVariant& from, std::vector<Pending>& pending);
    static void copyList(List& to, const List& from, std::vector<Pending>& pending);
    static void copyMap(Map& to, const Map& from, std::vector<Pending>& pending);
    static void copyPending(std::vector<Pending>& pending);
    static void copyDeep(kyVariant& to, const kyVariant& from);
    static void copyMapDeep(Map& to, const Map& from);
};

/// 2, 3, 4, 9 or 16 for the vectors and matrices, 0 for anything else.
constexpr std::size_t numberCount(Type type) noexcept
{
    switch (type)
    {
    case Type::Vec2d: return 2;
    case Type::Vec3d: return 3;
    case Type::Vec4d: return 4;
    case Type::Mat3d: return 9;
    case Type::Mat4d: return 16;
    default: return 0;
    }
}

/// Appends toString() of the value to `out`.
void appendText(std::string& out, const kyVariant& value);
void appendListText(std::string& out, const List& list, std::string_view separator);
void appendMapText(std::string& out, const Map& map);

bool equalLists(const List& a, const List& b);
bool equalMaps(const Map& a, const Map& b);
bool lessList(const List& a, const List& b);
bool lessMap(const Map& a, const Map& b);

} // namespace ky::impl
