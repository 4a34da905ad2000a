# analysis_test.sh: what reads the sources without running them finds nothing:
# clang-tidy (.clang-tidy), cppcheck and codespell. Advice on includes, which
# is nothing but advice, goes to build/include-advice.txt.
#   cppcheck.cfg, cppcheck.txt   what cppcheck has to be told
#   words.txt                    words of ours that look misspelt
. "$SOURCE/tests/shipping/support.sh"
cd "$SOURCE" || exit 1
here=tests/all

# Explicit flags: the compilation database has each source twice.
includes="-Ilib -Itools -I$BINARY/include"
cat >"$work/tidy.sh" <<SCRIPT
exec clang-tidy --quiet "\$@" -- -std=c++20 -fno-exceptions -fno-rtti $includes
SCRIPT
ls lib/*.cc tools/*.cc tools/*/*.cc |
    xargs -P "$(nproc)" -n 8 sh "$work/tidy.sh" >"$work/tidy" 2>"$work/errors" || {
    grep -E '(warning|error):' "$work/tidy" "$work/errors" | sort -u
    bad "clang-tidy complains"
}

cppcheck --quiet --std=c++20 --language=c++ -j "$(nproc)" \
    --enable=warning,performance,portability --error-exitcode=1 \
    --library=$here/cppcheck.cfg --suppressions-list=$here/cppcheck.txt \
    -Ilib -Itools lib tools >"$work/cppcheck" 2>&1 ||
    { cat "$work/cppcheck"; bad "cppcheck complains"; }

codespell --ignore-words $here/words.txt --ignore-regex '\\[tn][a-z]+' \
    --skip './build*,./.git,./fuzz/seeds,./abi/*.abi' || bad "codespell complains"

iwyu_tool -p "$BINARY" -j "$(nproc)" lib tools >build/include-advice.txt 2>&1
grep -q 'has correct #includes' build/include-advice.txt ||
    bad "no advice on includes"
finish
