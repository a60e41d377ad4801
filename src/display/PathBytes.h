// Paths as the file system knows them (bytes) and as they are shown.
#pragma once

#include <wx/string.h>

#include <string>

// The bytes a shown path stands for (the file-name encoding, UTF-8).
std::string PathBytes(const wxString& path);

// A path's bytes as text: UTF-8 when they are, otherwise every byte that is
// not ASCII shows as "_" (the name keeps its bytes elsewhere).
wxString PathFromBytes(const std::string& bytes);
