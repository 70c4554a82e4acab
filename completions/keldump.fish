# Fish completion of keldump and its companions.
for command in keldump keldump-all
    complete -c $command -o v -d 'More detail'
    complete -c $command -o a -d 'Audio samples in hexadecimal'
    complete -c $command -o d -d 'Text dump'
    complete -c $command -o h -d 'Hex dump'
    complete -c $command -o hn -d 'Hex dump without offsets'
    complete -c $command -o mc -d 'MXF without file positions'
    complete -c $command -o ml -d 'MXF items up to 1 GiB'
    complete -c $command -o mx -d 'MXF labels as separate bytes'
    complete -c $command -o p -d 'With -v: first pixels of a TIFF'
    complete -c $command -o s -d 'Strings'
    complete -c $command -o t -d 'Timecode in pictures and samples'
    complete -c $command -o u -d 'Text as UTF-8'
end
complete -c keldump -o ms -d 'Write frames of an MXF'
for command in keldump-all keldump-diff keldump-seq keldump-table
    complete -c $command -l help -d 'Usage'
    complete -c $command -l version -d 'Version'
end
complete -c keldump-all -l raw -d 'Bytes as they are'
complete -c keldump-all -s j -x -d 'Files at a time'
complete -c keldump-table -s j -x -d 'Files at a time'
complete -c keldump-table -l csv -d 'Comma-separated values'
complete -c keldump-table -l json -d 'JSON'
complete -c keldump-diff -l all -d 'Positions, dates and identifiers, too'
complete -c keldump-diff -o v -d 'More detail'
