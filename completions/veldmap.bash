# Completion of veldmap command lines for bash: the program itself says what a word may become.

# Sets plain to the word $1 without the quotes and backslashes of the shell. An open quote counts too.
_veldmap_plain()
{
    case $1 in
        \'*) plain=${1#\'} plain=${plain%\'} ;;
        *) plain=${1#\"} plain=${plain%\"} plain=${plain//\\/} ;;
    esac
}

# Sets quoted to the candidate $1 as the shell wants it in the place of the begun word $2.
_veldmap_quoted()
{
    case $2 in
        \'*) quoted=$1 ;;
        \"*) quoted=${1//\$/\\\$} ;;
        *) printf -v quoted %q "$1" ;;
    esac
}

_veldmap()
{
    local program=${1/#\~/$HOME} begun=${COMP_WORDS[COMP_CWORD]} front="" at plain quoted lines
    local words=()
    # Bash cuts words at "=".
    for ((at = 1; at <= COMP_CWORD; ++at)); do
        _veldmap_plain "${COMP_WORDS[at]}"
        if ((at > 1)) && [[ ${COMP_WORDS[at]} == = || ${COMP_WORDS[at - 1]} == = ]]; then
            words[-1]+=$plain
        else
            words+=("$plain")
        fi
    done
    if [[ $begun == = ]]; then
        begun=""
    fi
    _veldmap_plain "$begun"
    front=${words[-1]%"$plain"}

    COMPREPLY=()
    mapfile -t lines < <("$program" complete --words "${words[@]}" 2>/dev/null)
    case ${lines[0]} in
        :file | :description)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$plain")
            ;;
        :directory)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -d -- "$plain")
            ;;
        *)
            for line in "${lines[@]}"; do
                _veldmap_quoted "${line%%$'\t'*}" "$begun"
                COMPREPLY+=("${quoted#"$front"}")
            done
            return
            ;;
    esac
    if [[ ${lines[0]} == :description ]]; then
        local files=("${COMPREPLY[@]}") file
        COMPREPLY=()
        for file in "${files[@]}"; do
            if [[ -d $file || $file == *.xml || $file == *.xmd || $file == *.svd ]]; then
                COMPREPLY+=("$file")
            fi
        done
    fi
}

complete -F _veldmap veldmap
