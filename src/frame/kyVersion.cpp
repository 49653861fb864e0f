// SPDX-License-Identifier: MIT
#include <ky/kyVersion.h>

#include <tuple>

namespace ky
{

kyVersion::kyVersion(unsigned major, unsigned minor, unsigned revision, const std::string& description, unsigned extra1,
                     unsigned extra2)
    : mMajor(major),
      mMinor(minor),
      mRevision(revision),
      mExtra1(extra1),
      mExtra2(extra2),
      mDescription(description)
{
}

kyVersion::~kyVersion() = default;

void kyVersion::setVersion(unsigned major, unsigned minor, unsigned revision, const std::string& description,
                           unsigned extra1, unsigned extra2)
{
    *this = kyVersion(major, minor, revision, description, extra1, extra2);
}

bool kyVersion::operator==(const kyVersion& other) const
{
    return mMajor == other.mMajor && mMinor == other.mMinor && mRevision == other.mRevision;
}

bool kyVersion::operator<(const kyVersion& other) const
{
    return std::tie(mMajor, mMinor, mRevision) < std::tie(other.mMajor, other.mMinor, other.mRevision);
}

} // namespace ky
