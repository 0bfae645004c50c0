// Symbols as pictures of the style sheet: url(tick#rrggbb.symbol) is that symbol in that colour, drawn in any size.
#pragma once

// Before the first style sheet that asks for one; further calls do nothing.
void initSymbolIcons();
