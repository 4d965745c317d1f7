#pragma once

#include <QString>
#include <memory>

class Nib;

// Interface files by the host's language. Both ways look for NAME.nib in the folder of the default language
// ("en" when there is none), then in en.lproj, then directly among the resources; a folder of that name
// counts as found. When there is none, the main bundle or the given one is searched by the person's own
// languages. Nothing is reported but the result.
namespace SelectedLanguage
{

// The file for a window: looked for in the default bundle, at last in the application's main bundle. Null
// when there is none.
QString windowNibPath(const QString &name);

// The interface file itself: looked for in that bundle, in the application's main bundle for a null path.
// Empty when there is none or it cannot be read.
std::unique_ptr<Nib> initWithResourceNibName(const QString &name, const QString &bundlePath);

} // namespace SelectedLanguage
