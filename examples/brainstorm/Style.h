#pragma once

namespace ideas {

// Puts the app's own look over the toolkit's, light or dark, and takes the other one away.
void applyStyle(bool isDark);

} // namespace ideas
