#pragma once

#include "Classes/Mode/Xml.h"

// The document that was read or written last, so that what one edit wrote need not be parsed for the next.
// Whoever asks has read the file, and is given the kept document only for the very same bytes: whatever
// another program does to the file, the answer is what a fresh parse would give. One document in the process;
// main thread.
namespace LastDocument
{

// The document of these bytes, from here on the caller's alone: the kept one, or a draft made of them.
Xml::Draft take(const QByteArray &utf8);

// Keeps a document that reads and writes like a parse of these bytes. One of more than 32 MiB is dropped, as
// it would hold too much memory.
void keep(const QByteArray &utf8, std::unique_ptr<pugi::xml_document> document);

// Drops what is kept.
void forget();

} // namespace LastDocument
