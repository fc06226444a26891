;;; emacs.el --- How long Emacs takes to respond on a large repository  -*- lexical-binding: t; -*-

;;; Commentary:

;; NEBSC=build/release/bin/nebsc emacs --batch -Q -l Benchmarks/Editors/emacs.el
;; FILES=COUNT sets the number of changed files, COMMITS=COUNT that of commits (100,000 each).
;;
;; Emacs reads a key between two calls of `accept-process-output': so long a key may have to wait.
;; The parts run twice: with a pause after each, in which Emacs collects the garbage, and without.

;;; Code:

(require 'cl-lib)
(defconst latency-top (expand-file-name "../.." (file-name-directory load-file-name))
  "The top folder of the sources.")
(defconst latency-folder (file-name-as-directory (make-temp-file "nebgit" t))
  "Folder of the repository and of the compiled package.")

;; As the package manager installs it.  Another Emacs compiles the package, because compilation loads
;; the sources, which would then be measured.
(let ((package (expand-file-name "emacs" latency-folder)))
  (copy-directory (expand-file-name "Editors/emacs" latency-top) package)
  (unless (eql 0 (call-process (expand-file-name invocation-name invocation-directory) nil nil nil
                               "--batch" "-Q" "-L" package "--eval"
                               (format "(byte-recompile-directory %S 0)" package)))
    (error "Cannot compile %s" package))
  (push package load-path))
(require 'nebgit)

(defun latency-shown-p (mode text)
  "Return non-nil if a buffer in MODE has a match of TEXT."
  (cl-some (lambda (buffer)
             (with-current-buffer buffer
               (and (derived-mode-p mode)
                    (save-excursion
                      (goto-char (point-min))
                      (re-search-forward text nil t)))))
           (buffer-list)))

(defun latency-processor-time ()
  "Return the seconds of processor time that Emacs has used."
  (float-time (get-internal-run-time)))

(defun latency-allocated ()
  "Return the MiB that Emacs has allocated since its start."
  ;; Conses, floats, vector cells, symbols, characters, intervals, strings of a 64-bit Emacs.
  (/ (apply #'+ (cl-mapcar #'* (memory-use-counts) '(16 8 8 48 1 56 32))) 1048576.0))

(defun latency-git (&rest arguments)
  "Run git with ARGUMENTS, and return its output."
  (with-temp-buffer
    (unless (eql 0 (apply #'call-process "git" nil t nil arguments))
      (error "Command git %s: %s" arguments (buffer-string)))
    (buffer-string)))

(defmacro latency-measure (name finished &rest body)
  "Run BODY, wait for FINISHED, and print the longest times under NAME."
  (declare (indent 2))
  `(latency--measure ,name (lambda () ,@body) (lambda () ,finished)))

;; Fails after two minutes.
(defun latency--measure (name start finished)
  "Call START, wait until FINISHED returns non-nil; print the times under NAME."
  (let* ((begin (float-time)) (gc gc-elapsed) (allocated (latency-allocated))
         (longest 0) (processor 0)
         (last begin) (last-processor (latency-processor-time)))
    (cl-flet ((note ()
                (let ((now (float-time)) (now-processor (latency-processor-time)))
                  (setq longest (max longest (- now last))
                        processor (max processor (- now-processor last-processor))
                        last now
                        last-processor now-processor))))
      (funcall start)
      (note)
      (while (not (funcall finished))
        (when (> (- last begin) 120)
          (error "Waited in vain for %s" name))
        (accept-process-output nil 0.001)
        (note))
      (message (concat "%-36s %8.0f ms   key: longest %6.1f ms, processor %6.1f ms;"
                       " %4.1f MiB, garbage collection %.0f ms")
               name (* 1000 (- (float-time) begin)) (* 1000 longest) (* 1000 processor)
               (- (latency-allocated) allocated) (* 1000 (- gc-elapsed gc))))))

(defun latency-median (function)
  "Return the median of the milliseconds that 15 calls of FUNCTION return."
  (nth 7 (sort (cl-loop for round from 1 to 15 collect (funcall function round)) #'<)))

(defmacro latency-time (&rest body)
  "Return the milliseconds that BODY takes."
  `(let ((begin (float-time)))
     ,@body
     (* 1000 (- (float-time) begin))))

(defun latency-log (commits)
  "Measure the log of COMMITS commits, a commit and the blame of a file."
  (latency-measure (format "first page of %d commits" commits) (> (buffer-size) 0)
    (nebgit-log))
  (latency-measure "20 pages more" (progn
                                     (unless nebgit-log--reading
                                       (goto-char (point-max))
                                       (nebgit-log-more))
                                     (>= (line-number-at-pos (point-max)) (min commits 2000))))
  (goto-char (point-min))
  (forward-line 500)
  (latency-measure "a commit" (latency-shown-p 'nebgit-revision-mode "^\\+[0-9]")
    (nebgit-log-show))
  (find-file "lines10000")
  (latency-measure "blame of 10,000 lines" (latency-shown-p 'nebgit-blame-mode "line 10000")
    (nebgit-blame)))

(defun latency-signs (lines)
  "Measure the marks of a file of so many LINES."
  (find-file (format "lines%d" lines))
  (nebgit-changes-mode 1)
  (latency-measure (format "text of %d lines in the index" lines) nebgit-changes--tick)
  (let ((change
         (latency-median
          (lambda (round)
            (goto-char (point-min))
            (forward-line (* 50 round))
            (insert "changed ")
            (latency-time
             (nebgit-changes--compare (current-buffer))
             (while (not (eql nebgit-changes--tick (buffer-chars-modified-tick)))
               (accept-process-output nil 0.001))))))
        (git (progn
               (let ((inhibit-message t)) (save-buffer))
               (latency-median
                (lambda (_)
                  (latency-time (latency-git "diff" "--unified=0" "--" buffer-file-name)))))))
    (latency-git "add" "--" buffer-file-name)
    (message (concat "marks, %5d lines: median %.1f ms after a change (git diff %.1f ms),"
                     " %.1f ms after git add")
             lines change git
             (latency-time (while nebgit-changes--hunks
                             (accept-process-output nil 0.001))))))

(defun latency-commit ()
  "Measure to stage a hunk and to commit it."
  (find-file "lines1000")
  (goto-char (point-min))
  (insert (format "%s\n" (float-time)))
  (let ((inhibit-message t)) (save-buffer))
  (nebgit-changes--compare (current-buffer))
  (while (not nebgit-changes--hunks) (accept-process-output nil 0.001))
  (goto-char (point-min))
  (latency-measure "staging of a hunk" (not nebgit-changes--hunks)
    (nebgit-hunk-stage))
  (nebgit-commit)
  (insert "Change a line")
  (let ((message (current-buffer)))
    (latency-measure "commit" (not (buffer-live-p message))
      (nebgit-commit-finish))))

(defun latency-status (files)
  "Measure the status of FILES changed files."
  (latency-measure (format "status of %d changed files" files) (not nebgit-status--refreshing)
    (nebgit-status)
    (set-buffer (get-buffer (nebgit--status-name (nebgit-root)))))
  (latency-measure "status, again" (not nebgit-status--refreshing)
    (nebgit-status-refresh)))

(defun latency-parts (files commits after)
  "Measure all parts with FILES and COMMITS; call AFTER after each."
  (pcase-dolist (`(,part . ,size) `((latency-log . ,commits) (latency-signs . 1000)
                                    (latency-signs . 10000) (latency-status . ,files)
                                    (latency-commit)))
    (apply part (and size (list size)))
    (funcall after))
  (let (kill-buffer-query-functions)
    (dolist (buffer (buffer-list))
      (when (or (buffer-file-name buffer) (string-prefix-p "*nebgit " (buffer-name buffer)))
        (kill-buffer buffer)))))

(defun latency-pause ()
  "Make a pause, in which Emacs collects the garbage."
  (latency-measure "  pause" (not nebgit-garbage--threshold)))

(let* ((root (file-name-as-directory (expand-file-name "repository" latency-folder)))
       (files (string-to-number (or (getenv "FILES") "100000")))
       (commits (string-to-number (or (getenv "COMMITS") "100000"))))
  (unwind-protect
      (progn
        (call-process (expand-file-name "Benchmarks/Editors/large_repository.sh" latency-top)
                      nil nil nil root (number-to-string files) (number-to-string commits))
        (setq nebgit-program (expand-file-name (or (getenv "NEBSC") "nebsc"))
              default-directory root)
        (let ((end (+ (float-time) 2)))
          (latency-measure "nothing" (> (float-time) end)))
        (latency-measure "a garbage collection" t (garbage-collect))
        (latency-parts files commits #'latency-pause)
        (message "\nThe same without pauses")
        (setq default-directory root)
        (latency-parts files commits #'ignore)
        (latency-pause))
    (delete-directory latency-folder t)))

;;; emacs.el ends here
