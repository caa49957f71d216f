#pragma once

#include <string>
#include <vector>

namespace backends {

// A message that somebody is to write: what stands in it already. The texts are UTF-8, the attachments absolute paths.
struct MailMessage {
    std::vector<std::string> recipients {}; // "ada@example.org"
    std::string subject {};
    std::string body {};
    std::vector<std::string> attachments {};
};

// The address that stands for all but the attachments ("mailto:", RFC 6068).
std::string mailtoAddress(MailMessage const& message);

} // namespace backends
