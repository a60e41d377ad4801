// The inner list widget of a file list. In report view it is a virtual list:
// the rows come from a ListingRows model, so a folder of any size is shown
// at once. In icon view it holds ordinary inserted items.
#pragma once

#include <wx/listctrl.h>

class ListingRows;

class ListingListView : public wxListCtrl {
 public:
  ListingListView(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size, long style,
                  const ListingRows* rows);

  bool IsVirtualView() const { return HasFlag(wxLC_VIRTUAL); }

  // Report view: drops every row and the selection, then shows the model's
  // current row count.
  void ReloadRows();

  // Index of the first selected row from the top, -1 when none.
  long FirstSelected() const;

  // Makes the first row the current one (focused, not selected) when no row
  // is: the arrow keys move only from a current row, so a list reached by
  // the keyboard must have one.
  void MakeCurrentRowIfNone();

 protected:
  wxString OnGetItemText(long item, long column) const override;
  int OnGetItemImage(long item) const override;

 private:
  void OnSetFocus(wxFocusEvent& event);

  const ListingRows* m_rows;

  DECLARE_EVENT_TABLE()
};
