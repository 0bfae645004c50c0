// The outlines and icons that are built into the program.
#pragma once

// Before the first of them is read; further calls do nothing.
void initControlsResources();
