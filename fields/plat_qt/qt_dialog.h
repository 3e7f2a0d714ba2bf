// Dialog boxes in the window: each box shown as a window of its own with the
// toolkit's controls, placed in cells of the dialog font. The box's model
// stays the truth: a change to it is copied onto the controls, and what the
// user does with a control is copied back into it at once and becomes the
// same event texts the field pages make.
#pragma once
#include "fields/dialogs/dialogs.h"
#include <QDialog>
#include <QImage>
#include <vector>

class QAbstractButton;
class QLabel;

// The controls that show one item.
struct qd_item {
  QWidget *main = nullptr;                 // label, input, button, choice or list; null for a group
  QLabel *title = nullptr;                 // the title of a group, choice or list, when it has one
  std::vector<QAbstractButton *> toggles;  // the toggles of a group
  int number = 0;                          // its number among the items of its kind, from 1
  int top = -1;                            // a list: the first line last scrolled to
};

class qdbox : public QDialog {
 public:
  qdbox(dy_box &b, QWidget *parent);
  QRect cells(double x, double y, double w, double h) const;  // an item's place, in pixels
  void reject() override;  // Escape and the close button

  dy_box *model;               // the box; null once it is destroyed
  std::vector<qd_item> items;  // by index in the model's items
  int cw = 9, ch = 15;         // the cell of the dialog font
  std::string fontname;        // the dialog font's name the cell was taken from
  int focus_shown = -2;        // the model's focus last given to a control

 protected:
  bool event(QEvent *e) override;
  bool eventFilter(QObject *o, QEvent *e) override;
};

// From now on boxes are shown as windows of their own (unless
// XED_DIALOG_PAGES is set in the environment: they stay field pages).
void qd_install();
qdbox *qd_box(int h);  // the window of a box, null when it has none
// The main window with the boxes shown over it, as a picture.
QImage qd_shot();

// Between the two files of the view.
// The controls from the model; a box made in another dialog font takes
// the new one first, and its controls stand in the new font's cells.
void qd_sync(qdbox &d);
void qd_wire(qdbox &d, int i);  // the signals of item i's controls, once made
int qd_read();                  // one wait of a box asked modally
