#pragma once

#include <QString>

namespace lxm {

// Where the user's files go unless the user says otherwise: the documents folder, created when
// it is missing. Never the program's own folder, which a user may not write to (and root
// should not litter).
QString DocumentsFolder();

// Where a file dialog starts. Within one run of the program every dialog starts in the folder
// of the file last saved or opened through any of them; before the first, in the folder the
// caller names when it exists and is not the program's own, else in the documents folder. A
// file name the caller offers is kept.
class DialogStart {
public:
    QString For(const QString& asked) const;
    // A file the user chose in a dialog.
    void Chosen(const QString& file);

private:
    QString last_;
};

}  // namespace lxm
