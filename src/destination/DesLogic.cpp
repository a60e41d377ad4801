#include "destination/DesLogic.h"

#include <wx/filename.h>

#include "disk/View_Disk_Info.h"
#include "display/ListingText.h"
#include "display/VolumeText.h"

wxString DesVolumeRowText(char letter, const wxString& label, const wxString& freeText) {
  return wxString::Format("(%c:\\) %s   (%s Free)", letter, label, freeText);
}

int DesSourceVolumeIndex(const wxString& sourcePath) {
  if (sourcePath.length() < 6) return -1;
  return static_cast<int>(sourcePath[5].GetValue()) - 'C';
}

std::vector<DesVolumeRow> DesVolumeRows(const VolumeInformation* volumes, int count,
                                        int sourceIndex) {
  std::vector<DesVolumeRow> rows;
  for (int i = 0; i < count; ++i) {
    if (i == sourceIndex && count > 1) continue;
    const VolumeInformation& v = volumes[i];
    DesVolumeRow row;
    row.text = DesVolumeRowText(v.DriveLetter, VolumeText(v.VolumeLabel), VolumeText(v.FreeText));
    row.rootText = wxString::Format("%c:\\", v.DriveLetter);
    row.rootPath = VolumeText(v.MountPoint) + "/";
    row.icon = v.Removable != 0 ? 1 : 0;
    row.volumeIndex = i;
    rows.push_back(row);
  }
  return rows;
}

wxString DesFolderFieldText(const wxString& folder) {
  wxString text = listing::CovertPath(folder);
  if (text.length() > 3) text.RemoveLast();
  return text;
}

wxString DesUpFieldText(const wxString& folder) {
  wxString path = folder;
  if (path.length() > 7) path.RemoveLast();
  return listing::CovertPath(path);
}

wxString DesDestinationPath(const wxString& cur, const wxString& name) {
  if (cur.empty()) return wxString();
  wxString full = cur + name;
  const wxString folder = cur.Left(cur.length() - 1);
  if (name.empty()) full = folder;
  if (wxFileName::FileExists(full)) return folder;
  return full;
}
