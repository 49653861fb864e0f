// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A version number of anything. The library's own version: `kySystem::Version` in ky/kySystem.h.

#include <ky/kyExport.h>

#include <string>

namespace ky
{

/// Major, minor and revision number with a description. Comparisons go by the three numbers, in this order; the
/// description and the two further values take no part, so records that differ only there are equal.
class KY_API kyVersion
{
public:
    /// 0.0.0 without a description.
    kyVersion() = default;

    /// \param major,minor,revision what is compared, in this order
    /// \param description UTF-8
    /// \param extra1,extra2 kept and copied with the record, for its owner's use
    kyVersion(unsigned major, unsigned minor, unsigned revision, const std::string& description = {},
              unsigned extra1 = 0, unsigned extra2 = 0);
    /// Everything is copied or moved.
    /// @{
    kyVersion(const kyVersion& other) = default;
    kyVersion& operator=(const kyVersion& other) = default;
    kyVersion(kyVersion&& other) = default;
    kyVersion& operator=(kyVersion&& other) = default;
    /// @}
    virtual ~kyVersion();

    /// Sets everything, as the constructor does.
    void setVersion(unsigned major, unsigned minor, unsigned revision, const std::string& description = {},
                    unsigned extra1 = 0, unsigned extra2 = 0);

    /// What the record was given.
    /// @{
    [[nodiscard]] unsigned getMajorVersion() const { return mMajor; }
    [[nodiscard]] unsigned getMinorVersion() const { return mMinor; }
    [[nodiscard]] unsigned getRevision() const { return mRevision; }
    [[nodiscard]] const std::string& getDescription() const { return mDescription; }
    /// @}

    /// By major, minor and revision number.
    /// @{
    bool operator==(const kyVersion& other) const;
    bool operator<(const kyVersion& other) const;
    bool operator!=(const kyVersion& other) const { return !(*this == other); }
    bool operator<=(const kyVersion& other) const { return !(other < *this); }
    bool operator>(const kyVersion& other) const { return other < *this; }
    bool operator>=(const kyVersion& other) const { return !(*this < other); }
    /// @}

private:
    unsigned mMajor = 0;
    unsigned mMinor = 0;
    unsigned mRevision = 0;
    [[maybe_unused]] unsigned mExtra1 = 0; ///< part of the layout
    [[maybe_unused]] unsigned mExtra2 = 0; ///< part of the layout
    std::string mDescription;
};

} // namespace ky
