#pragma once

#include <string_view>
#include <vector>

#include "artefact/relations.h"
#include "inspect/report.h"

namespace sealwright {

/// What each file is, what it holds, and what it has to do with the others. A name for each file,
/// in their order; names are only repeated.
std::vector<Report> describe(FileSet& files, const std::vector<std::string_view>& names);

}  // namespace sealwright
