// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoEntry.h"

namespace Repo {

bool operator==(const Entry& left, const Entry& right)
{
    return left.id == right.id;
}

bool operator!=(const Entry& left, const Entry& right)
{
    return !(left == right);
}

} // namespace Repo
