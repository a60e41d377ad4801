#pragma once

// Registers every image handler wxWidgets offers, once per process: a second
// registration would only add duplicates.
void InitAllImageHandlersOnce();
