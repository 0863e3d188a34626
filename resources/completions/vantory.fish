# Completion of vantory's command line for fish.

# What the program lists: items or backups. A name with a line end in it cannot be offered.
function __vantory_list
    set -l program (commandline -opc)[1]
    $program --list-$argv[1] --print0 2>/dev/null | string split0 | string match -rv '\n'
end

# Succeeds at that operand of one of the tasks, given with its dash or as the task to preview.
function __vantory_at
    set -l words (commandline -opc)
    for i in (seq 2 (count $words))
        set -l task
        switch $words[$i]
            case -autobackup -restoredefault -list -trash -lock -unlock -backup -restore --default --rename --remove --update --prune --undo --restore-keys --compare
                set task (string replace -r '^-+' '' -- $words[$i])
            case --preview --json --strict
                continue
            case '*'
                contains -- --preview $words; or return 1
                set task $words[$i]
        end
        contains -- $task $argv[2..]; and test (math (count $words) - $i + 1) = $argv[1]
        return
    end
    return 1
end

# Succeeds while there is neither a task nor a question on the line.
function __vantory_at_start
    not string match -qr '^-(-list-|-preview|-compare|-verify|-check-catalog|-self-check|-default|-rename|-remove|-update|-prune|-undo|-receipts|-restore-keys|[a-z])' -- (commandline -opc)[2..]
end

function __vantory_at_question
    string match -qr '^--(list-|receipts|preview|compare|verify|check-catalog|self-check)' -- (commandline -opc)
end

# Succeeds where the task to preview goes.
function __vantory_at_preview
    set -l words (string match -v -- --json (commandline -opc))
    test "$words[-1]" = --preview
end

# Item keys separated by commas; each is offered once.
function __vantory_keys
    set -l before (string match -r '.*,' -- (commandline -ct))
    for key in (__vantory_list items)
        contains -- $key (string split , -- $before); or printf '%s%s\n' "$before" $key
    end
end

# Those of automatic backups too.
function __vantory_all_names
    __vantory_list backups | string replace -r '.*/(.*?)(\.vnt)?$' '$1'
end

function __vantory_names
    set -l manual (__vantory_list backups | string match -v '*/Autosaves/*')
    string replace -r '.*/(.*?)(\.vnt)?$' '$1' -- $manual
end

function __vantory_receipts
    set -l program (commandline -opc)[1]
    $program --receipts --print0 2>/dev/null | string split0
end

# Backups by their path; fish finds them by any part of it.
function __vantory_paths
    __vantory_list backups
    __fish_complete_directories (commandline -ct) | string match -rv '\.vnt/\t'
end

complete -c vantory -f
complete -c vantory -n __vantory_at_start -a -autobackup -d 'Back up all preferences into a new automatic backup'
complete -c vantory -n __vantory_at_start -a -restoredefault -d 'Restore the backup that is marked as default'
complete -c vantory -n __vantory_at_start -a -list -d 'Print the backups of the library as a property list'
complete -c vantory -n __vantory_at_start -a -trash -d 'Move preference files to the Trash'
complete -c vantory -n __vantory_at_start -a -lock -d 'Lock preference files against changes'
complete -c vantory -n __vantory_at_start -a -unlock -d 'Unlock preference files'
complete -c vantory -n __vantory_at_start -a -backup -d 'Back up into the library under a name'
complete -c vantory -n __vantory_at_start -a -restore -d 'Restore the backup at a path'
complete -c vantory -n __vantory_at_start -l default -d 'Make a backup the default, or none'
complete -c vantory -n __vantory_at_start -l rename -d 'Rename a backup'
complete -c vantory -n __vantory_at_start -l remove -d 'Move a backup to the Trash'
complete -c vantory -n __vantory_at_start -l update -d 'Replace what a backup holds by the present files'
complete -c vantory -n __vantory_at_start -l prune -d 'Remove old automatic backups'
complete -c vantory -n __vantory_at_start -l restore-keys -d 'Put single keys of a backup back'
complete -c vantory -n __vantory_at_start -l undo -d 'Take a task back'
complete -c vantory -n __vantory_at_start -l list-items -d 'List applications, their items with keys, and files'
complete -c vantory -n __vantory_at_start -l list-backups -d 'List the backups of the library and what they hold'
complete -c vantory -n __vantory_at_start -l receipts -d 'List what tasks did lately'
complete -c vantory -n __vantory_at_start -l preview -d 'Tell what a task would do'
complete -c vantory -n __vantory_at_start -l compare -d 'Tell what restoring a backup would change'
complete -c vantory -n __vantory_at_start -l verify -d 'Tell whether backups are sound'
complete -c vantory -n 'contains -- --verify (commandline -opc)' -a '(__vantory_all_names)' -d Backup
complete -c vantory -n __vantory_at_start -l check-catalog -r -F -d 'Tell what is wrong with catalog files'
complete -c vantory -n __vantory_at_start -l self-check -r -F -d 'Tell whether the system does all that is built on'
complete -c vantory -n __vantory_at_question -l json -d 'Answer in JSON'
complete -c vantory -n __vantory_at_start -l json -d 'Report what a task did in JSON'
complete -c vantory -n __vantory_at_start -l home -r -F -d 'Work in this home'
complete -c vantory -n __vantory_at_start -l homes -r -F -d 'Work in each of these homes'
complete -c vantory -n __vantory_at_start -l jobs -x -d 'In so many homes at once'
complete -c vantory -n __vantory_at_start -l busy -d 'Also in homes with a file just changed'
complete -c vantory -n __vantory_at_start -l strict -d 'Let the exit code of a task tell more'
complete -c vantory -n __vantory_at_question -l print0 -d 'List only keys or paths, each ended by a zero byte'
complete -c vantory -n __vantory_at_start -s h -l help -d 'Print a short help'
complete -c vantory -n __vantory_at_start -l version -d 'Print the version'

complete -c vantory -n __vantory_at_preview -a 'autobackup restoredefault list trash lock unlock backup restore default rename remove update prune undo restore-keys'
complete -c vantory -n '__vantory_at 1 trash lock unlock' -a '-allprefs' -d 'All items of preferences proper'
complete -c vantory -n '__vantory_at 1 trash lock unlock' -a '-allfiles' -d 'All items'
complete -c vantory -n '__vantory_at 1 trash' -a 'fcp fce stp motion color dvdsp livetype compressor batchmon ct'
complete -c vantory -n '__vantory_at 1 trash lock unlock' -a '(__vantory_keys)'
complete -c vantory -n '__vantory_at 1 backup' -a '(__vantory_names)' -d Backup
complete -c vantory -n '__vantory_at 1 default' -a none -d 'No backup'
complete -c vantory -n '__vantory_at 1 default rename remove update restore-keys' -a '(__vantory_all_names)' -d Backup
complete -c vantory -n '__vantory_at 1 undo' -a '(__vantory_receipts)' -d Receipt
complete -c vantory -n '__vantory_at 1 restore' -a '(__vantory_paths)'
complete -c vantory -n '__vantory_at 1 compare' -a '(__vantory_all_names)' -d Backup
complete -c vantory -n '__vantory_at 2 compare' -a '(__vantory_all_names)' -d Backup
complete -c vantory -n '__vantory_at 2 compare' -a '(__vantory_keys)'
complete -c vantory -n '__vantory_at 3 compare' -a '(__vantory_keys)'
complete -c vantory -n '__vantory_at 2 backup restore' -a '(__vantory_keys)'
complete -c vantory -n '__vantory_at 2 restore-keys' -a '(__vantory_keys)'
complete -c vantory -n '__vantory_at 3 backup' -a '(__vantory_keys)'
complete -c vantory -n '__vantory_at 2 trash lock unlock' -a '-task -hotkey' -d 'Show desktop notifications'
complete -c vantory -n '__vantory_at 3 restore' -a '-task -hotkey' -d 'Show desktop notifications'
complete -c vantory -n '__vantory_at 4 backup' -a '-task -hotkey' -d 'Show desktop notifications'
