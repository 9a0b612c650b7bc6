# Completion of veldmap command lines for fish: the program itself says what a word may become.

function __veldmap_complete
    set -l words (commandline -opc)
    set -l begun (commandline -ct | string replace -r '^["\']' '' | string replace -a '\\' '')
    set -l lines ($words[1] complete --words $words[2..-1] "$begun" 2>/dev/null)
    set -l front (string match -r '^--[^=]*=' -- "$begun")
    set -q front[1]; or set front ''
    set -l rest (string replace -r '^--[^=]*=' '' -- "$begun")
    switch "$lines[1]"
        case :file
            printf '%s\n' $front(__fish_complete_path "$rest")
        case :directory
            printf '%s\n' $front(__fish_complete_directories "$rest")
        case :description
            printf '%s\n' $front(__fish_complete_path "$rest" | string match -r '.*(?:/|\.xml|\.xmd|\.svd)(?:\t.*)?$')
        case '*'
            printf '%s\n' $lines
    end
end

complete -c veldmap -f -a '(__veldmap_complete)'
