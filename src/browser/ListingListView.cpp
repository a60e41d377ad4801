#include "browser/ListingListView.h"

#include "browser/ListingRows.h"

BEGIN_EVENT_TABLE(ListingListView, wxListCtrl)
  EVT_SET_FOCUS(ListingListView::OnSetFocus)
END_EVENT_TABLE()

ListingListView::ListingListView(wxWindow* parent, int id, const wxPoint& pos,
                                 const wxSize& size, long style, const ListingRows* rows)
    : wxListCtrl(parent, id, pos, size, style), m_rows(rows) {}

void ListingListView::ReloadRows() {
  DeleteAllItems();
  if (IsVirtualView() && m_rows) SetItemCount(m_rows->Count());
  // A folder opened from the keyboard goes on with the keyboard.
  if (HasFocus()) MakeCurrentRowIfNone();
  Refresh();
}

void ListingListView::MakeCurrentRowIfNone() {
  if (GetItemCount() > 0 && GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_FOCUSED) == -1)
    SetItemState(0, wxLIST_STATE_FOCUSED, wxLIST_STATE_FOCUSED);
}

void ListingListView::OnSetFocus(wxFocusEvent& event) {
  MakeCurrentRowIfNone();
  event.Skip();
}

long ListingListView::FirstSelected() const {
  return GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED);
}

wxString ListingListView::OnGetItemText(long item, long column) const {
  return m_rows ? m_rows->Text(item, static_cast<int>(column)) : wxString();
}

int ListingListView::OnGetItemImage(long item) const {
  return m_rows ? m_rows->Image(item) : -1;
}
