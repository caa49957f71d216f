#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace backends {

// A feed that carries its own signature, in a comment behind everything else:
//
//   <!-- sparkle-signatures:
//   edSignature: base64
//   length: 1234
//   -->
//
// The length is that of the signed bytes, which are all before the comment.
struct FeedSignature {
    std::string_view content {};
    std::string signature {};
};

// Absent when there is no such comment at the end, or when it is not about all that stands before it.
std::optional<FeedSignature> feedSignatureIn(std::string_view feed);

} // namespace backends
