// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyProgressNotifier.h>

#include <functional>
#include <vector>

namespace ky::test
{

/// Keeps every value that the hook was called with; `onChange` runs in the hook.
class RecordingNotifier : public kyProgressNotifier
{
public:
    using kyProgressNotifier::kyProgressNotifier;

    std::vector<float> take()
    {
        std::vector<float> result;
        result.swap(mValues);
        return result;
    }

    std::function<void(float)> onChange;

protected:
    void onProgressChanged(float globalProgress) override
    {
        mValues.push_back(globalProgress);
        if (onChange)
            onChange(globalProgress);
    }

private:
    std::vector<float> mValues;
};

} // namespace ky::test
