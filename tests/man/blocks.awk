# blocks.awk: the literal displays of a manual page, as they are read, each in
# a file of the folder `into`. Writes a line for each: the file, then what the
# comment right before the display calls it ("none" without one).
function plain(text) {
    gsub(/\\\(aq/, "'", text)
    gsub(/\\\(ga/, "`", text)
    gsub(/\\\(ha/, "^", text)
    gsub(/\\\(ti/, "~", text)
    gsub(/\\-/, "-", text)
    gsub(/\\&/, "", text)
    gsub(/\\e/, "\\", text)
    return text
}

on && /^\.Ed/ { on = 0; close(file); next }
on { print plain($0) >file; next }
/^\.Bd -literal/ {
    on = 1
    file = sprintf("%s/block%02d", into, ++count)
    printf "" >file
    print file, kind == "" ? "none" : kind
}
{ kind = /^\.\\" / ? substr($0, 5) : "" }
