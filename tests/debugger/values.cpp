// SPDX-License-Identifier: MIT
// What a debugger is shown: it stops in shown().
#include <ky/kyVariant.h>

namespace
{

ky::kyVariant tree;

void shown() { tree.editMap().editValue("seen") = true; }

} // namespace

int main()
{
    tree = ky::kyVariant(ky::kyVariant::Type::Map);
    ky::kyVariant::kyVariantMapImpl& map = tree.editMap();
    map["whole"] = 42;
    map["part"] = 2.5;
    map["name"] = "B\xc3\xa4r";
    map["nothing"];
    map["when"] = ky::kyVariant::DateTime(7);
    const double corner[] = {1, 2, 3};
    map["corner"] = ky::kyVariant(corner, 3);
    map["names"] = std::vector<std::string>{"a", "b"};
    map["list"] = ky::kyVariant::kyVariantListImpl{1, "two", ky::kyVariant(ky::kyVariant::Type::List)};
    map.editValuePath("deep/er") = false;
    shown();
}
