// doc.h: worked examples of the documents, so that tests hold them to what
// they show.
#ifndef TOVAN_TESTS_DOC_H
#define TOVAN_TESTS_DOC_H

#include <string>
#include <vector>

namespace support {

// The code block that opens with ```name in docs/`page`; fails the test when
// there is none.
std::string doc_block(const std::string &page, const std::string &name);

// The rows of the table in docs/`page` whose head row is `head`: cells without
// blanks around them and without backquotes. Fails the test when there is
// none.
std::vector<std::vector<std::string>> doc_table(const std::string &page,
                                                const std::string &head);

}  // namespace support

#endif
