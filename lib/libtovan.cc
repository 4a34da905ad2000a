// libtovan.cc: the list of all sources. Linking it links the whole library.
#include "tovan.h"

#include "ident.h"

// Every source of the library, in byte order of the names.
// clang-format off
#define TOVAN_SOURCES(X) \
    X(add_map) X(apperrs) X(archout) X(arheader) X(atoin) X(befreed)         \
    X(chkalloc) X(clean) X(clonfork) X(closbrak) X(convlong) X(cpioput)      \
    X(ddbm) X(ddbmalgn) X(ddbmdir) X(ddbmget) X(ddbmhash) X(ddbmiter)        \
    X(ddbmpage) X(ddbmpair) X(ddbmstor) X(ddt) X(deflvar) X(dlalloc)         \
    X(dospath) X(dup2) X(duponto) X(dyalloc) X(dycache) X(dydadd) X(dyedit)  \
    X(dyfmt) X(dypadd) X(dypflist) X(dypsplit) X(dystr) X(emitlacol)         \
    X(eprintf) X(errcheck) X(errexit) X(errmsg) X(error) X(evalarit)         \
    X(execcmmd) X(execstr) X(fakeuse) X(fastout) X(findfile) X(fmatch)       \
    X(fmbraces) X(fmgraph) X(fmmemory) X(fmreport) X(fopenfix) X(forkcmmd)   \
    X(frogtostr) X(function) X(futime) X(getdylin) X(getdywrd) X(gethome)    \
    X(gethost) X(getpath) X(getuname) X(globber) X(hashtree) X(home_morva)   \
    X(inclflgs) X(ingroup) X(issymlnk) X(istype) X(isvopfil) X(itoa)         \
    X(ixpath) X(kdbminit) X(keyed) X(lclexit) X(ldbminit) X(leafnm)          \
    X(lexless) X(libtovan) X(linktab) X(loadmaps) X(lvbracks) X(lvchksys)    \
    X(lverror) X(lvexpand) X(lvexport) X(lvfndsrc) X(lvfnfile) X(lvfnpath)   \
    X(lvfntext) X(lvfnvars) X(lvfuncts) X(lvget) X(lvheap) X(lvhshtab)       \
    X(lvindex) X(lvpipe) X(lvsrcdir) X(lvvar) X(lvvmatch) X(makedir)         \
    X(map_root) X(mem_cpy) X(mk_temp) X(mkstemp) X(monthnms) X(nalloc)       \
    X(newexport) X(nocore) X(openread) X(opentmp) X(overwhite) X(p_table)    \
    X(patmatch) X(presolve) X(progdesc) X(protect) X(putcols) X(r64tol)      \
    X(rdflist) X(rdyline) X(re_type) X(read1blk) X(readblk) X(repchar)       \
    X(room) X(rxpauto) X(rxpcomp) X(rxpdump) X(rxpfilter) X(rxpmemo)         \
    X(rxpneedle) X(rxpopt) X(rxppeval) X(rxpplan) X(rxpquick) X(rxprewrt)    \
    X(rxprun) X(rxpscan) X(rxpshape) X(sanemode) X(savesigs) X(savestr)      \
    X(sfdict) X(sfdictext) X(sfixfile) X(sflines) X(sfopenfile) X(sfproc)    \
    X(sfput) X(sfputdict) X(sfrefer) X(sfterm) X(sfvalvar) X(sfwindow)       \
    X(sfwords) X(simplify) X(split) X(spread) X(startshr) X(stdfids)         \
    X(str_chr) X(strhash) X(strindex) X(strpcmp) X(svstr) X(sysio)           \
    X(sysnames) X(tarout) X(testdrvr) X(trait) X(traitstr) X(traitwlk)       \
    X(trim) X(trtab) X(u_arlist) X(uniqfile) X(uniqid) X(usage) X(usestrs)   \
    X(v_libtov) X(wait4pid) X(whichsig) X(zombie)
// clang-format on

#define DECLARE_IDENT(name) extern const char SID_##name[];
#define ADDRESS_OF_IDENT(name) SID_##name,

extern "C" {
TOVAN_SOURCES(DECLARE_IDENT)
}

constinit const char *const libtovan_list[] = {TOVAN_SOURCES(ADDRESS_OF_IDENT)};

TOVAN_IDENT(libtovan, "8.4", "26/11/21")
