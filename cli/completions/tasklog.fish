# Completion of tasklog for fish. What may come next the command itself says: tasklog complete. fish shows a completion
# the line as far as the cursor, so a log has to stand before the name that is typed.

function __tasklog_complete
    set -l before (commandline -opc)
    # The word that is typed comes as it stands there, with the quote that it begins with.
    set -l typed (string replace -r '^["\']' '' -- (commandline -ct) | string unescape)
    for line in (command $before[1] complete (math (count $before) - 1) $before[2..-1] "$typed" 2>/dev/null)
        if string match -q -r '^\tfiles' -- $line
            set -l option (string replace -r '^\tfiles\t?' '' -- $line)
            for path in (__fish_complete_path (string replace -- "$option" '' "$typed"))
                echo $option$path
            end
        else
            echo $line
        end
    end
end

complete -c tasklog -f -a '(__tasklog_complete)'
