#pragma once

namespace lumiquilt {

/// The icon of a message box; every message the user sees has a text, a title and one.
enum class MessageIcon { none, critical, question, exclamation, information };

}  // namespace lumiquilt
