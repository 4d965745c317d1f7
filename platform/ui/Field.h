#pragma once

#include <QLineEdit>
#include <functional>

// Text fields as the editors use them.
namespace Field
{

// Puts a text into the field without telling anybody, the caret staying where the person had it. Nothing
// happens for a missing field or the same text.
void putText(QLineEdit *field, const QString &text);

// Calls the handler for every change of the field's text that did not come from putText: typed, pasted,
// undone, or made by an assistive tool. While an input method composes the call waits for the end of it: what
// is put into the field would change the text under the composition. Takes the field's limit of length away.
// Nothing happens for a missing field.
void onTextChange(QLineEdit *field, QObject *context, const std::function<void(QLineEdit *)> &handler);

} // namespace Field
