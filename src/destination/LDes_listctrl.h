// The visible list inside Des_listctrl (window id 1001). It is the source
// side's inner list without a press notice: key presses go on to the control
// that holds it, mouse presses are only passed on, and no command code is
// ever posted.
#pragma once

#include "browser/L_listctrl.h"

class LDes_listctrl : public L_listctrl {
 public:
  using L_listctrl::L_listctrl;
};
