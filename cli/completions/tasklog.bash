# Completion of tasklog for bash. What may come next the command itself says: tasklog complete.

# Splits a line into `words` as bash does, without doing what stands in it: nothing typed is expanded or run. Leaves
# in `quote` the quote that is open at the end, and in `broken` how much of the last word stands before the place from
# which readline replaces it.
_tasklog_split() {
  local LC_ALL=C line=$1 char word= i inside=
  words=() quote= broken=0
  for ((i = 0; i < ${#line}; ++i)); do
    char=${line:i:1}
    case $quote$char in
      "''" | '""') quote= broken=${#word} ;;
      \'? | '"'[!\\]) word+=$char ;;
      [\'\"]) quote=$char inside=1 broken=${#word} ;;
      \\ | \"\\) ((++i)); word+=${line:i:1} inside=1 ;;
      [[:space:]])
        [[ -z $word$inside ]] || words+=("$word")
        word= inside= broken=0 ;;
      *)
        word+=$char
        [[ $COMP_WORDBREAKS != *"$char"* ]] || broken=${#word} ;;
    esac
  done
  words+=("$word")
}

# As the word that is typed takes it: within its quotes, or without.
_tasklog_quoted() {
  case $quote in
    \') [[ $1 == *\'* ]] || quoted=$1 ;;
    \") quoted=${1//[\\]/\\\\} quoted=${quoted//\"/\\\"} quoted=${quoted//\$/\\\$} quoted=${quoted//\`/\\\`} ;;
    *) printf -v quoted %q "$1" ;;
  esac
}

# The words behind the one that is typed: a log may stand there.
_tasklog_rest() {
  local words broken begun=$quote quote
  _tasklog_split "${begun}x${COMP_LINE:COMP_POINT}"
  rest=("${words[@]:1}")
}

_tasklog() {
  local words quote broken before place offer quoted rest
  COMPREPLY=()
  _tasklog_split "${COMP_LINE:0:COMP_POINT}"
  _tasklog_rest
  ((place = ${#words[@]} - 2, place >= 0)) || return 0
  before=${words[-1]:0:broken}
  while IFS= read -r offer; do
    if [[ $offer == $'\t'files* ]]; then
      compopt -o default 2>/dev/null
      continue
    fi
    quoted=
    _tasklog_quoted "${offer%%$'\t'*}"
    [[ -z $quoted ]] || COMPREPLY+=("$quoted")
    [[ $quoted != *: ]] || compopt -o nospace 2>/dev/null
  done < <(command -- "${words[0]/#~\//$HOME/}" complete "$place" "${words[@]:1}" "${rest[@]}" 2>/dev/null)
  if ((broken)); then
    _tasklog_quoted "$before"
    COMPREPLY=("${COMPREPLY[@]#"$quoted"}")
  fi
}

complete -F _tasklog tasklog
