function rec = tarno2_read(file, varargin)
%TARNO2_READ  Reads a recording of Tarno2, in MATLAB (R2016b or later) and Octave (7 or later).
%
%   REC = TARNO2_READ('run.dat') reads all of a recording. The name may also be that of its description (run.txt), of its
%   passport (run.json) or of any of its pieces: the pieces of one that was cut are joined.
%
%   REC = TARNO2_READ(FILE, NAME, VALUE, ...) reads a part of it:
%     'from'      first frame, from 1 (1)
%     'count'     how many frames; fewer where the recording ends earlier (all). 0 reads what is known and no sample
%     'channels'  columns: numbers from 1, a name, or names in a cell array (all)
%     'want'      what is read, a cell array: {'codes', 'volts', 'units', 'lines', 'time', 'utc'}
%
%   A frame is one sample of every channel. REC has the fields
%     frames, rate, from, count     frames in all files; frames a second, Hz; what was read
%     names, unitNames, lineNames   of the columns that were read, and of the digital lines
%     codes, volts, units           frames by columns: codes of the converter, volts, values in the units of the channels
%     lines                         frames by lines: 0 or 1
%     time                          seconds from the first frame of the stream
%     utc                           seconds since 1970 by the computer's clock; empty without a passport. In MATLAB
%                                   datetime(rec.utc, 'ConvertFrom', 'posixtime', 'TimeZone', 'UTC')
%     records                       records around triggers: begin, frames, trigger (frames from 1; NaN where it was cut
%                                   off), streamTrigger (frame of the stream, from 0; NaN where nobody knows)
%     marks                         number, frame (from 1; NaN where it is in no file), streamFrame, utc, source, text
%     pieces                        data files: file, begin (first frame, from 1), frames
%     channels                      of all columns: number, name, unit, factor, offset, upper, lower
%     passport                      all that the program knew, as jsondecode gives it; [] without one
%     notes                         what about the files is not as they tell, a cell array
%
%   Example: the spectrum of a second of one channel
%     rec = tarno2_read('run.dat', 'from', 1, 'count', 100000, 'channels', 'bearing', 'want', {'units'});
%     plot(abs(fft(rec.units)))
%
%   docs/formats.md and docs/passport.md tell what the files hold.

  options = readOptions(varargin);
  [files, passport, notes] = findFiles(file);
  [format, notes] = readFormat(files, passport, notes);
  if isempty(format.passport)
    passport = [];
  end
  rec = struct('frames', format.frames, 'rate', format.rate);
  rec.from = options.from;
  rec.count = max(min(options.count, format.frames - options.from + 1), 0);
  columns = chosenColumns(options.channels, format.channels);
  rec.names = {format.channels(columns).name};
  rec.unitNames = {format.channels(columns).unit};
  rec.lineNames = format.lineNames;
  [rec.records, places] = readRecords(format, passport);
  if isempty(places)
    notes{end + 1} = [files.data{1} ': the gaps between its frames are not known; its time runs on over them'];
  end
  rec = readSamples(rec, format, columns, options.want);
  rec = readTimes(rec, format, passport, places, options.want);
  [rec.marks, notes] = readMarks([files.base '.marks.csv'], places, notes);
  rec.pieces = format.pieces;
  rec.channels = format.channels;
  rec.passport = passport;
  rec.notes = notes;
end

function options = readOptions(pairs)
  options = struct('from', 1, 'count', Inf, 'channels', [], 'want', []);
  options.want = {'codes', 'volts', 'units', 'lines', 'time', 'utc'};
  if mod(numel(pairs), 2) ~= 0
    error('tarno2:options', 'options are pairs of a name and a value');
  end
  for i = 1:2:numel(pairs)
    if ~ischar(pairs{i}) || ~isfield(options, pairs{i})
      error('tarno2:options', 'there are the options ''from'', ''count'', ''channels'' and ''want''');
    end
    options.(pairs{i}) = pairs{i + 1};
  end
  if ischar(options.want)
    options.want = {options.want};
  end
  if options.from < 1 || options.from ~= fix(options.from) || options.count < 0
    error('tarno2:options', 'frames are counted from 1');
  end
end

% ---- which files belong to the recording

function [files, passport, notes] = findFiles(file)
  if exist(file, 'file') ~= 2
    error('tarno2:file', '%s: there is no such file', file);
  end
  notes = {};
  [folder, base, extension] = splitName(file);
  [passport, notes] = readPassport([folder base '.json'], notes);
  parts = regexp(base, '^(.+)_([1-9]\d*)$', 'tokens', 'once');
  if isempty(passport) && exist([folder base '.json'], 'file') ~= 2 && ~isempty(parts)
    % It may be a piece of a recording that was cut.
    number = str2double(parts{2});
    [whole, wholeNotes] = readPassport([folder parts{1} '.json'], {});
    if isempty(whole)
      isPiece = exist([folder parts{1} '.json'], 'file') ~= 2 && exist([folder parts{1} extension], 'file') == 2 && ...
                any(piecesThere([folder parts{1}], extension) == number);
    else
      isPiece = ~isfield(whole, 'pieces') || number < numel(whole.pieces);
    end
    if isPiece
      base = parts{1};
      passport = whole;
      notes = wholeNotes;
    end
  end
  files.base = [folder base];
  if ~isempty(passport) && isfield(passport, 'pieces')
    files.listed = 0:numel(passport.pieces) - 1;
    there = arrayfun(@(k) exist(pieceName(files.base, k, extension), 'file') == 2, files.listed);
    if ~all(there)
      notes{end + 1} = sprintf('%s%s: %d pieces are missing', files.base, extension, sum(~there));
    end
    files.numbers = files.listed(there);
  else
    files.listed = [];
    files.numbers = piecesThere(files.base, extension);
  end
  if isempty(files.numbers)
    error('tarno2:file', '%s%s: there is no such data file', files.base, extension);
  end
  files.data = arrayfun(@(k) pieceName(files.base, k, extension), files.numbers, 'UniformOutput', false);
  files.descriptions = arrayfun(@(k) pieceName(files.base, k, '.txt'), files.numbers, 'UniformOutput', false);
end

% The parts of a name; the extension is that of the data, whatever file of the recording was named.
function [folder, base, extension] = splitName(file)
  [folder, base, extension] = fileparts(file);
  if ~isempty(folder)
    folder = [folder filesep];
  end
  if numel(file) > 10 && strcmpi(file(end - 9:end), '.marks.csv')
    [~, base] = fileparts(base);
    extension = '.txt';
  end
  if any(strcmpi(extension, {'.txt', '.json', '.log', '.sha256', '.tarno2-journal'}))
    extension = '.dat';
    if exist([folder base extension], 'file') ~= 2
      error('tarno2:file', '%s: there is no data file %s.dat beside it; name the data file', file, base);
    end
  end
end

function name = pieceName(base, number, extension)
  if number > 0
    base = sprintf('%s_%d', base, number);
  end
  name = [base extension];
end

% Pieces without gaps, from 0 or 1 on. A file with a passport of its own is a recording of its own, and so is one whose
% description tells of other samples.
function numbers = piecesThere(base, extension)
  numbers = [];
  known = [];
  k = 0;
  while k == 0 || (exist(pieceName(base, k, extension), 'file') == 2 && exist(pieceName(base, k, '.json'), 'file') ~= 2)
    if exist(pieceName(base, k, extension), 'file') == 2
      if exist(pieceName(base, k, '.txt'), 'file') == 2
        description = readDescription(pieceName(base, k, '.txt'));
        if isempty(known)
          known = description;
        elseif ~isequal(known.layout, description.layout) || known.channelCount ~= description.channelCount
          return;
        end
      end
      numbers(end + 1) = k; %#ok<AGROW>
    end
    k = k + 1;
  end
end

function [passport, notes] = readPassport(file, notes)
  passport = [];
  if exist(file, 'file') ~= 2
    return;
  end
  try
    passport = jsondecode(readText(file));
    if ~strcmp(passport.format, 'Tarno2 passport') || passport.formatVersion ~= 1
      error('tarno2:passport', 'it is no passport of this version');
    end
  catch problem
    notes{end + 1} = [file ': ' problem.message];
    passport = [];
  end
end

% A text in UTF-8.
function text = readText(file)
  id = fopen(file, 'r', 'n', 'UTF-8');
  if id < 0
    error('tarno2:file', '%s: cannot be read', file);
  end
  text = fread(id, Inf, 'char=>char')';
  fclose(id);
  if ~isempty(text) && double(text(1)) == 65279
    text = text(2:end);
  end
end

% ---- what the samples are

function [format, notes] = readFormat(files, passport, notes)
  known = [];
  descriptions = cell(size(files.data));
  for i = 1:numel(files.data)
    if exist(files.descriptions{i}, 'file') == 2
      descriptions{i} = readDescription(files.descriptions{i});
      if isempty(known)
        known = descriptions{i};
      elseif ~isequal(known.layout, descriptions{i}.layout) || known.channelCount ~= descriptions{i}.channelCount
        error('tarno2:description', '%s: its samples are others than those of %s', files.descriptions{i}, known.file);
      end
    else
      notes{end + 1} = [files.descriptions{i} ': there is no description']; %#ok<AGROW>
    end
  end
  if ~isempty(passport) && ~isempty(known) && ...
     (numel(passport.channels) ~= known.channelCount || passport.sample.bytes ~= known.layout(1))
    notes{end + 1} = [files.base '.json: tells of other samples than the description'];
    passport = [];
  end
  if isempty(passport) && isempty(known)
    error('tarno2:description', '%s: it has no description', files.data{1});
  end
  format = formatOf(passport, known);
  format.passport = passport;
  format.known = known;
  format.pieces = struct('file', {}, 'number', {}, 'begin', {}, 'frames', {});
  begin = 1;
  for i = 1:numel(files.data)
    details = dir(files.data{i});
    frames = floor(details(1).bytes / (format.width * numel(format.channels)));
    if ~isempty(descriptions{i}) && descriptions{i}.frames >= 0 && descriptions{i}.frames ~= frames
      notes{end + 1} = sprintf('%s: holds %.0f frames, but its description counts %.0f', files.data{i}, frames, ...
                               descriptions{i}.frames); %#ok<AGROW>
    end
    piece = struct('file', files.data{i}, 'number', files.numbers(i), 'begin', begin, 'frames', frames);
    format.pieces(end + 1) = piece;
    begin = begin + frames;
  end
  format.frames = begin - 1;
end

% Of a sample: width, shift, bits, signed; lines: lineShift, lineMask, lineCount.
function format = formatOf(passport, known)
  if isempty(known)
    sample = passport.sample;
    layout = [sample.bytes, sample.codeShift, 0, sample.codeBits, sample.lineShift, sample.lineMask, sample.lines, ...
              double(sample.signed)];
  else
    layout = known.layout;
  end
  format.width = layout(1);
  format.shift = layout(2);
  format.bits = layout(4);
  format.lineShift = max(layout(5), 0);
  format.lineMask = mod(layout(6), 2 ^ (8 * layout(1)));
  format.lineCount = max(layout(7), 0);
  format.signed = layout(8) == 1;
  format.lowest = -format.signed * 2 ^ (format.bits - 1);
  format.highest = 2 ^ (format.bits - format.signed) - 1;
  format.channels = channelsOf(passport, known);
  format.lineNames = arrayfun(@(i) sprintf('Line %d', i), 0:format.lineCount - 1, 'UniformOutput', false);
  if isempty(passport)
    format.rate = known.frequency;
    return;
  end
  if passport.sample.codeBits == format.bits && logical(passport.sample.signed) == format.signed
    format.lowest = passport.sample.codeMinimum;
    format.highest = passport.sample.codeMaximum;
  end
  format.rate = passport.rate.recorded;
  if isfield(passport.rate, 'packetsGiven')
    % In packet mode a frame is a packet, and "recorded" tells the samples within one.
    format.rate = passport.rate.packetsGiven / passport.rate.decimation;
  end
  lines = entries(passport.lines);
  for i = 1:numel(lines)
    if ~isempty(lines{i}.name) && lines{i}.number < format.lineCount
      format.lineNames{lines{i}.number + 1} = lines{i}.name;
    end
  end
end

function channels = channelsOf(passport, known)
  if isempty(passport)
    count = known.channelCount;
    backward = known.backward;
  else
    told = entries(passport.channels);
    count = numel(told);
    backward = passport.sample.backwardOrder;
  end
  channels = struct('number', {}, 'name', {}, 'unit', {}, 'factor', {}, 'offset', {}, 'upper', {}, 'lower', {});
  for i = 1:count
    channel = struct('number', NaN, 'name', sprintf('Channel %d', i - 1), 'unit', 'V', 'factor', 1, 'offset', 0, ...
                     'upper', 0, 'lower', 0);
    if isempty(passport)
      channel.upper = known.ranges(2 * i - 1);
      channel.lower = known.ranges(2 * i);
    else
      channel = told{i};
      if isempty(channel.name)
        channel.name = sprintf('Channel %d', channel.number);
      end
      if isempty(channel.unit)
        channel.unit = 'V';
      end
      if isfield(channel, 'gain')
        channel = rmfield(channel, 'gain');
      end
    end
    for field = fieldnames(channels)'
      channels(i).(field{1}) = channel.(field{1});
    end
  end
  if backward
    channels = channels(end:-1:1);
  end
end

% A list of JSON, whose objects may have become an array or cells.
function list = entries(value)
  if iscell(value)
    list = value(:)';
  elseif isempty(value)
    list = {};
  else
    list = arrayfun(@(entry) entry, value(:)', 'UniformOutput', false);
  end
end

function known = readDescription(file)
  known.file = file;
  id = fopen(file, 'r');
  if id < 0
    error('tarno2:file', '%s: cannot be read', file);
  end
  bytes = fread(id, [1 Inf], 'uint8');
  fclose(id);
  bytes(bytes > 127) = '?';  % letters of code page 1251; no key and no number has any
  text = char(bytes);
  text = strrep(text, char([13 10]), char(10));
  text = strrep(text, char([92 10]), ' ');  % a backslash continues a line
  known.layout = numbersOf(text, 'DataFormat');
  known.channelCount = numberOf(text, 'ChannelNumber', -1);
  known.ranges = numbersOf(text, 'ChannelsRange');
  known.frequency = numberOf(text, 'Frequency', -1);
  known.frames = numberOf(text, 'DataCountPerChannel', -1);
  known.packets = numberOf(text, 'PacketMode', 0) == 1;
  known.backward = numberOf(text, 'BackwardOrder', 0) == 1;
  known.prehistory = 0;
  known.history = 0;
  if numberOf(text, 'SynchroEnable', 0) == 1
    known.prehistory = numberOf(text, 'SynchroListPrehistory', 0);
    known.history = numberOf(text, 'SynchroListHistory', 0);
  end
  layout = known.layout;
  if numel(layout) ~= 8 || ~any(layout(1) == [2 4]) || layout(4) < 1 || layout(2) < 0 || ...
     layout(2) + layout(4) > 8 * layout(1)
    error('tarno2:description', '%s: DataFormat is missing or makes no sense', file);
  elseif known.channelCount < 1
    error('tarno2:description', '%s: ChannelNumber is missing or makes no sense', file);
  elseif numel(known.ranges) ~= 2 * known.channelCount
    error('tarno2:description', '%s: ChannelsRange is missing or makes no sense', file);
  elseif ~(known.frequency > 0)
    error('tarno2:description', '%s: Frequency is missing or makes no sense', file);
  end
end

% The numbers behind a key, of which the first that stands there counts.
function numbers = numbersOf(text, key)
  numbers = [];
  value = regexp(text, ['^[ \t]*' key '[ \t]*=([^;\n]*)'], 'tokens', 'once', 'lineanchors');
  if isempty(value)
    return;
  end
  for part = strsplit(value{1}, ',')
    number = sscanf(part{1}, '%f', 1);
    if ~isempty(number)
      numbers(end + 1) = number; %#ok<AGROW>
    end
  end
end

function number = numberOf(text, key, missing)
  numbers = numbersOf(text, key);
  number = missing;
  if ~isempty(numbers)
    number = numbers(1);
  end
end

function columns = chosenColumns(wanted, channels)
  if isempty(wanted)
    columns = 1:numel(channels);
    return;
  end
  if ischar(wanted)
    wanted = {wanted};
  elseif isnumeric(wanted)
    wanted = num2cell(wanted(:)');
  end
  columns = zeros(1, numel(wanted));
  for i = 1:numel(wanted)
    if ischar(wanted{i})
      found = find(strcmp(wanted{i}, {channels.name}));
      if numel(found) ~= 1
        error('tarno2:channel', '%d channels are called "%s"', numel(found), wanted{i});
      end
      columns(i) = found;
    elseif wanted{i} >= 1 && wanted{i} <= numel(channels)
      columns(i) = wanted{i};
    else
      error('tarno2:channel', 'column %g is not among %d', wanted{i}, numel(channels));
    end
  end
end

% ---- records and marks

% Records, and runs of frames that follow each other in the files and in the stream: [first frame, first frame of the
% stream, frames], frames from 0; empty where nobody knows.
function [records, places] = readRecords(format, passport)
  prehistory = 0;
  history = 0;
  if ~isempty(passport) && strcmp(passport.synchronisation.mode, 'records')
    prehistory = passport.synchronisation.prehistory;
    history = passport.synchronisation.history;
  elseif isempty(passport) && ~isempty(format.known)
    prehistory = format.known.prehistory;
    history = format.known.history;
  end
  runs = zeros(0, 4);
  length = prehistory + history;
  for piece = format.pieces(1:numel(format.pieces) * (length > 0))
    first = (0:length:piece.frames - 1)';
    frames = min(piece.frames - first, length);
    runs = [runs; piece.begin - 1 + first, streamTriggers(passport, piece.number, first), frames, ...
            first * 0 + prehistory]; %#ok<AGROW>
  end
  records = struct('begin', num2cell(runs(:, 1)' + 1), 'frames', num2cell(runs(:, 3)'), ...
                   'trigger', num2cell(runs(:, 1)' + 1 + prehistory), 'streamTrigger', num2cell(runs(:, 2)'));
  for i = find(runs(:, 3)' <= prehistory)
    records(i).trigger = NaN;
  end
  places = placesOf(format, passport, runs);
end

function triggers = streamTriggers(passport, number, first)
  triggers = NaN(size(first));
  if isempty(passport) || ~isfield(passport, 'records')
    return;
  end
  list = entries(passport.records);
  told = list(cellfun(@(entry) isfield(entry, 'trigger') && entry.piece == number, list));
  [found, at] = ismember(first, cellfun(@(entry) entry.frame, told));
  values = cellfun(@(entry) entry.trigger, told);
  triggers(found) = values(at(found));
end

function places = placesOf(format, passport, runs)
  places = [];
  if ~isempty(runs)
    if ~any(isnan(runs(:, 2)))
      places = [runs(:, 1), max(runs(:, 2) - runs(:, 4), 0), runs(:, 3)];
    end
    return;
  end
  if ~isempty(passport) && strcmp(passport.synchronisation.mode, 'analysis')
    return;
  end
  begins = [format.pieces.begin]' - 1;
  places = [begins, begins, [format.pieces.frames]'];
  if ~isempty(passport) && isfield(passport, 'pieces')
    % With pieces that were taken away: the passport knows how long they were.
    lengths = cellfun(@(entry) entry.frames, entries(passport.pieces));
    before = [0, cumsum(lengths(:)')];
    places(:, 2) = before([format.pieces.number] + 1);
  end
end

function [marks, notes] = readMarks(file, places, notes)
  marks = struct('number', {}, 'frame', {}, 'streamFrame', {}, 'utc', {}, 'source', {}, 'text', {});
  if exist(file, 'file') ~= 2
    return;
  end
  lines = strsplit(strrep(readText(file), char(13), ''), char(10));
  if ~strcmp(lines{1}, 'mark,frame,utc,source,text')
    notes{end + 1} = [file ': it is no list of marks'];
    return;
  end
  for i = 2:numel(lines) - 1  % what stands behind the last line end was cut off
    parts = regexp(lines{i}, '^(\d+),(\d+),([^,]*),([^,]*),(.*)$', 'tokens', 'once');
    if isempty(parts)
      notes{end + 1} = sprintf('%s: line %d is no mark', file, i); %#ok<AGROW>
      return;
    end
    text = parts{5};
    if ~isempty(text) && text(1) == '"'
      text = strrep(text(2:end - 1), '""', '"');
    end
    stream = str2double(parts{2});
    marks(i - 1) = struct('number', str2double(parts{1}), 'frame', frameOf(places, stream), 'streamFrame', stream, ...
                          'utc', secondsOf(parts{3}), 'source', parts{4}, 'text', text);
  end
  % By their numbers; of two lines for one mark the later one counts.
  [~, at] = unique([marks.number], 'last');
  marks = marks(at);
end

% The frame of the files, from 1, that is this one of the stream; NaN when it is in none.
function frame = frameOf(places, stream)
  frame = NaN;
  if isempty(places)
    return;
  end
  run = find(places(:, 2) <= stream & stream < places(:, 2) + places(:, 3), 1, 'last');
  if ~isempty(run)
    frame = places(run, 1) + stream - places(run, 2) + 1;
  end
end

% Seconds since 1970.
function seconds = secondsOf(text)
  parts = sscanf(text, '%d-%d-%dT%d:%d:%f');
  seconds = (datenum(parts(1), parts(2), parts(3)) - 719529) * 86400 + parts(4) * 3600 + parts(5) * 60 + parts(6);
end

% ---- samples and times

function rec = readSamples(rec, format, columns, want)
  wants = @(name) any(strcmp(name, want));
  parts = {'codes', 'volts', 'units'};
  for part = parts(cellfun(wants, parts))
    rec.(part{1}) = zeros(rec.count, numel(columns));
  end
  if wants('lines')
    rec.lines = zeros(rec.count, format.lineCount, 'uint8');
  end
  if ~any(cellfun(wants, [parts {'lines'}]))
    return;
  end
  upper = [format.channels(columns).upper];
  lower = [format.channels(columns).lower];
  scale = (upper - lower) / (format.highest - format.lowest);
  done = 0;
  for piece = format.pieces
    first = max(rec.from - piece.begin, 0);
    left = min(piece.frames - first, rec.count - done);
    while left > 0
      count = min(left, max(floor(2 ^ 21 / numel(format.channels)), 1));
      words = readWords(piece.file, first, count, format);
      rows = done + 1:done + count;
      codes = codesOf(words(:, columns), format);
      volts = bsxfun(@plus, bsxfun(@times, codes - format.lowest, scale), lower);
      if wants('codes')
        rec.codes(rows, :) = codes;
      end
      if wants('volts')
        rec.volts(rows, :) = volts;
      end
      if wants('units')
        factors = [format.channels(columns).factor];
        rec.units(rows, :) = bsxfun(@plus, bsxfun(@times, volts, factors), [format.channels(columns).offset]);
      end
      if wants('lines') && format.lineCount > 0
        rec.lines(rows, :) = linesOf(words(:, 1), format);
      end
      done = done + count;
      first = first + count;
      left = left - count;
    end
  end
end

function words = readWords(file, first, count, format)
  id = fopen(file, 'r', 'ieee-le');
  if id < 0
    error('tarno2:file', '%s: cannot be read', file);
  end
  channels = numel(format.channels);
  fseek(id, first * format.width * channels, 'bof');
  words = fread(id, [channels, count], sprintf('uint%d=>double', 8 * format.width))';
  fclose(id);
  if size(words, 1) ~= count
    error('tarno2:file', '%s: it ended early', file);
  end
end

function codes = codesOf(words, format)
  codes = mod(floor(words / 2 ^ format.shift), 2 ^ format.bits);
  if format.signed
    negative = codes >= 2 ^ (format.bits - 1);
    codes(negative) = codes(negative) - 2 ^ format.bits;
  end
end

function lines = linesOf(words, format)
  port = floor(bitand(words, format.lineMask) / 2 ^ format.lineShift);
  lines = zeros(numel(words), format.lineCount, 'uint8');
  for i = 1:format.lineCount
    lines(:, i) = mod(floor(port / 2 ^ (i - 1)), 2);
  end
end

function rec = readTimes(rec, format, passport, places, want)
  frames = rec.from - 1 + (0:rec.count - 1)';
  stream = frames;
  if ~isempty(places) && rec.count > 0
    places = places(places(:, 3) > 0, :);
    [~, run] = histc(frames, [places(:, 1); Inf]); %#ok<HISTC>
    stream = frames - places(run, 1) + places(run, 2);
  end
  if any(strcmp('time', want))
    rec.time = stream / format.rate;
  end
  if any(strcmp('utc', want))
    rec.utc = [];
    if ~isempty(passport) && ~isempty(places)
      rec.utc = utcOf(stream, format, passport);
    end
  end
end

% By a straight line through the pairs of the clock, by least squares over the clock that never jumps; with fewer than
% two the frames follow the first one by their rate.
function utc = utcOf(stream, format, passport)
  utc = secondsOf(passport.start.utc) + stream / format.rate;
  if ~isfield(passport, 'clock')
    return;
  end
  pairs = entries(passport.clock.pairs);
  if numel(pairs) < 2
    return;
  end
  frames = cellfun(@(pair) pair.frame - pairs{1}.frame, pairs);
  seconds = cellfun(@(pair) pair.monotonic - pairs{1}.monotonic, pairs) * 1e-9;
  around = seconds - mean(seconds);
  squares = sum(around .^ 2);
  products = sum(around .* (frames - mean(frames)));
  if squares > 0 && products > 0
    rate = products / squares;
    origin = pairs{1}.frame + mean(frames) - rate * mean(seconds);
    utc = secondsOf(pairs{1}.utc) + (stream - origin) / rate;
  end
end
