// SPDX-License-Identifier: MIT
#include "text/vector_text.h"

namespace ky::impl
{

const VectorText* vectorText() noexcept { return nullptr; }

} // namespace ky::impl
