// SPDX-License-Identifier: MIT
// A tree changed by paths, against a plain map of full paths.
#include "ky/kyVariant.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

namespace
{

using ky::kyVariant;
using Map = kyVariant::kyVariantMapImpl;
/// Full path to leaf; a path that has something below it is a map and has no entry of its own.
using Model = std::map<std::string, std::int64_t>;

void require(bool condition, const char* what)
{
    if (!condition)
    {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

/// Reads small numbers and paths off the input.
class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}
    [[nodiscard]] bool empty() const { return at_ == end_; }
    std::uint8_t byte() { return at_ != end_ ? *at_++ : std::uint8_t{0}; }
    std::string path()
    {
        static const char* const keys[] = {"a", "b", "", "key", "longer key", "longer key 2", "\xff", "~"};
        std::string out = keys[byte() % 8];
        for (int steps = byte() % 4; steps > 0; --steps)
            out += std::string("/") + keys[byte() % 8];
        return out;
    }

private:
    const std::uint8_t* at_;
    const std::uint8_t* end_;
};

void eraseBelow(Model& model, const std::string& path)
{
    const std::string prefix = path + "/";
    model.erase(path);
    for (auto entry = model.begin(); entry != model.end();)
        entry = entry->first.compare(0, prefix.size(), prefix) == 0 ? model.erase(entry) : std::next(entry);
}

void put(Map& tree, Model& model, const std::string& path, std::int64_t value)
{
    tree.editValuePath(path.c_str(), kyVariant(), '/') = value;
    eraseBelow(model, path);
    for (std::size_t cut = path.find('/'); cut != std::string::npos; cut = path.find('/', cut + 1))
        model.erase(path.substr(0, cut));
    model[path] = value;
}

/// Empty maps, which removing leaves behind, are no leaves.
void requireSame(const Map& tree, const Model& model)
{
    Map flat;
    tree.toFlattenMap(flat, '/');
    require(flat.size() == model.size(), "number of leaves");
    auto leaf = flat.begin();
    for (const auto& [path, value] : model)
    {
        require(leaf->first == path && leaf->second == kyVariant(value), "leaf");
        require(tree.getValuePath(path.c_str(), kyVariant(), '/', Map::MapsOnly) == kyVariant(value), "look-up");
        ++leaf;
    }
    Map rebuilt;
    for (const auto& [path, value] : flat)
        rebuilt.editValuePath(path.c_str(), value, '/');
    Map merged(rebuilt);
    merged.mergeWith(Map(), false);
    require(merged == rebuilt && !(merged < rebuilt) && !(rebuilt < merged), "copy and compare");
    Map again;
    rebuilt.toFlattenMap(again, '/');
    require(again == flat, "flattened again");
}

std::string quoted(const std::string& path)
{
    std::string out;
    for (const char c : path)
        out += c == '/' ? std::string("\\/") : std::string(1, c);
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    Map tree;
    Model model;
    for (int count = 0; !input.empty() && count < 200; ++count)
    {
        const std::uint8_t operation = input.byte();
        const std::string path = input.path();
        switch (operation % 10)
        {
        case 0:
        case 1:
        case 2:
        case 5:
        case 6: put(tree, model, path, operation); break;
        case 3:
            tree.erasePathRegEx(quoted(path), false);
            eraseBelow(model, path);
            break;
        case 4:
        {
            const kyVariant* const found = tree.findPath(path.c_str(), '/', Map::MapsOnly);
            require((found != nullptr && found->getType() == kyVariant::Type::Integer) == (model.count(path) == 1),
                    "find");
            break;
        }
        default:
        {
            Map copy(tree);
            copy.mergeWith(Map{{"new", kyVariant(Map{{"entry", 1}})}}, false);
            copy.remove("new");
            tree.swap(copy);
            break;
        }
        }
    }
    requireSame(tree, model);
    return 0;
}
