#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/URL.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace backends {

// What the user is asked when folders are to be chosen, whoever draws the dialog. A value.
struct FolderQuestion {
    std::string message {};
    // What is on the button that accepts.
    std::string prompt {};
    // Where it starts; empty for wherever the dialog likes.
    std::string folder {};
    bool isForFolders = true;
    bool isMultiple = false;
    // The X window that the dialog belongs to.
    std::optional<std::uint32_t> parentWindow {};
};

// The answer: an empty list when the user chose nothing, an error when the user could not be asked, with one of these
// codes.
using FolderAnswer = platform::Result<std::vector<platform::URL>>;
using FolderAnswered = std::function<void(FolderAnswer const&)>;
// There is nobody who could ask; somebody else may.
constexpr int cannotAsk = 1;
// Whoever asked has died with the dialog open.
constexpr int didNotFinish = 2;

} // namespace backends
