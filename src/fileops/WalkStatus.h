// Status values that the long walks (counting, copying, deleting) hand up
// from level to level and keep in their dialogs' status fields.
#pragma once

enum WalkStatus {
  kStatusWalked = 1,     // the walk went to its end
  kStatusStopped = 10,   // the walk was stopped (Cancel, Close, the window went away)
  kStatusFinished = 11,  // the dialog's counting has finished and the totals are shown
};
