#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Orrery::Host {

/// `text` as it stands, character for character, in the source of a manual page: what is special there is escaped,
/// hyphens and quotes stay what a shell reads, and what isn't ASCII has the names of its code points.
std::string roffLiteral(std::string_view text);
std::string roffBold(std::string_view text);
std::string roffItalic(std::string_view text);

/// "orrery-ls(1)", with the name in bold.
std::string roffReference(std::string_view page);

/// Prose of a help: options and commands become bold, what stands for a value italic, "'orrery ls'" the name of its
/// page, and what is quoted in '' gets the quotes of print.
///
/// `placeholders` are the words in capitals; one of a single letter counts behind an option only.
std::string roffText(const std::string& text, const std::string& program,
                     const std::vector<std::string>& commands, const std::vector<std::string>& placeholders);

} // namespace Orrery::Host
